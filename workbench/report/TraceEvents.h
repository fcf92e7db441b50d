#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

/// A span of time on a track, with those inside it.
struct TraceSlice {
  std::int64_t begin = 0;  // nanoseconds
  std::int64_t end = 0;
  nlohmann::ordered_json::object_t event;  // its name, cat, args
  std::vector<TraceSlice> inside;          // one after the other

  struct Arrow {
    std::uint64_t id = 0;
    std::int64_t at = 0;
  };
  std::vector<Arrow> arrowsOut;  // `at`: before the end of this slice and before the arrow's end
  std::vector<std::uint64_t> arrowsIn;  // end at the slice's begin
};

/// The events of a trace in the Chrome trace event format.
///
/// The format requires that the slices of a track nest. Slices that overlap are therefore put on
/// further tracks of the same name. Slices are written as begin and end, and not with a duration,
/// so that a reader which rounds times keeps the nesting; events are in the order of time, because
/// readers take those of the same time in the order of the file.
class TraceEvents {
 public:
  /// Tracks are displayed in the order of their first slices. A slice that contains others of its
  /// track must have them in `inside`.
  void AddSlice(const std::string& track, TraceSlice slice);

  /// A span that is on no thread and may overlap others; `id`: of this one alone.
  void AddWaiting(std::uint64_t id, TraceSlice slice);

  void AddInstant(std::int64_t at, nlohmann::ordered_json event);

  /// All events, one a line, with commas between them.
  std::string Text() const;

 private:
  struct Event {
    std::int64_t at = 0;
    nlohmann::ordered_json json;
  };
  struct Track {
    std::string name;
    std::vector<TraceSlice> slices;
  };
  /// Appends the track with `number` as its first number; returns the next free one.
  static int AppendTrack(std::vector<Event>& events, const Track& track, int number);

  std::vector<Event> m_instants;
  std::vector<std::pair<std::uint64_t, TraceSlice>> m_waiting;
  std::vector<Track> m_tracks;
  std::map<std::string, std::size_t> m_positions;  // of tracks by name
};
