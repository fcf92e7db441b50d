#include "workbench/report/TraceEvents.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

namespace {

using Json = nlohmann::ordered_json;

// A reader takes the number of a thread for that of its process when an event has none: tracks
// therefore begin after the processes.
constexpr int kRun = 1;
constexpr int kWaits = 2;
constexpr int kFirstTrack = 3;

constexpr std::int64_t kFirst = std::numeric_limits<std::int64_t>::min();  // of names: no time

Json Microseconds(std::int64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / 1000.0;
}

Json NameEvent(const char* of, int process, int thread, const Json& name) {
  return {{"ph", "M"},
          {"pid", process},
          {"tid", thread},
          {"name", of},
          {"args", {{of == std::string("thread_sort_index") ? "sort_index" : "name", name}}}};
}

/// The end of the event that `begin` begins.
Json EndOf(const Json& begin) {
  Json end = begin;
  end.erase("args");
  end.erase("cname");
  end["ph"] = begin["ph"] == "B" ? "E" : "e";
  return end;
}

Json ArrowEvent(const char* phase, std::uint64_t id, int track) {
  Json event = {{"ph", phase},      {"pid", kRun},       {"tid", track},
                {"cat", "release"}, {"name", "release"}, {"id", id}};
  if (event["ph"] == "f") event["bp"] = "e";  // it ends in the slice around it, not in the next one
  return event;
}

/// Appends a slice and those inside it. `common`: the members that all of their events have.
template <typename Event>
void AppendSlice(std::vector<Event>& events, const TraceSlice& slice, const Json& common) {
  Json begin = common;
  begin.update(slice.event);
  const Json end = EndOf(begin);
  const int track = common["tid"];
  events.push_back({slice.begin, std::move(begin)});
  for (const std::uint64_t id : slice.arrowsIn) {
    events.push_back({slice.begin, ArrowEvent("f", id, track)});
  }
  for (const TraceSlice& inner : slice.inside) AppendSlice(events, inner, common);
  for (const TraceSlice::Arrow& arrow : slice.arrowsOut) {
    events.push_back({arrow.at, ArrowEvent("s", arrow.id, track)});
  }
  events.push_back({slice.end, end});
}

/// Distributes slices over as few rows as hold them without an overlap: the row of each.
std::vector<std::size_t> Rows(const std::vector<const TraceSlice*>& slices) {
  std::vector<std::size_t> rows;
  std::set<std::pair<std::int64_t, std::size_t>> ends;  // of the rows
  for (const TraceSlice* slice : slices) {
    std::size_t row = ends.size();
    if (!ends.empty() && ends.begin()->first <= slice->begin) {
      row = ends.begin()->second;
      ends.erase(ends.begin());
    }
    ends.emplace(slice->end, row);
    rows.push_back(row);
  }
  return rows;
}

}  // namespace

void TraceEvents::AddSlice(const std::string& track, TraceSlice slice) {
  const auto [position, isNew] = m_positions.emplace(track, m_tracks.size());
  if (isNew) m_tracks.push_back({track, {}});
  m_tracks[position->second].slices.push_back(std::move(slice));
}

void TraceEvents::AddWaiting(std::uint64_t id, TraceSlice slice) {
  m_waiting.emplace_back(id, std::move(slice));
}

void TraceEvents::AddInstant(std::int64_t at, Json event) {
  event.update({{"ph", "i"}, {"s", "p"}, {"pid", kRun}, {"tid", kFirstTrack}});
  m_instants.push_back({at, std::move(event)});
}

int TraceEvents::AppendTrack(std::vector<Event>& events, const Track& track, int number) {
  std::vector<const TraceSlice*> slices;
  for (const TraceSlice& slice : track.slices) slices.push_back(&slice);
  std::stable_sort(slices.begin(), slices.end(),
                   [](const TraceSlice* a, const TraceSlice* b) { return a->begin < b->begin; });
  const std::vector<std::size_t> rows = Rows(slices);
  const auto count = static_cast<int>(*std::max_element(rows.begin(), rows.end())) + 1;
  for (int row = number; row < number + count; ++row) {
    events.push_back({kFirst, NameEvent("thread_name", kRun, row, track.name)});
    events.push_back({kFirst, NameEvent("thread_sort_index", kRun, row, row)});
  }
  for (std::size_t i = 0; i < slices.size(); ++i) {
    const int thread = number + static_cast<int>(rows[i]);
    AppendSlice(events, *slices[i], {{"ph", "B"}, {"pid", kRun}, {"tid", thread}});
  }
  return number + count;
}

std::string TraceEvents::Text() const {
  std::vector<Event> events;
  events.push_back({kFirst, NameEvent("process_name", kRun, kRun, "run")});
  events.push_back({kFirst, NameEvent("process_name", kWaits, kWaits, "waiting, by plugin")});
  int number = kFirstTrack;
  for (const Track& track : m_tracks) number = AppendTrack(events, track, number);
  for (const auto& [id, slice] : m_waiting) {
    AppendSlice(events, slice,
                {{"ph", "b"}, {"pid", kWaits}, {"tid", kWaits}, {"id", fmt::format("{:#x}", id)}});
  }
  events.insert(events.end(), m_instants.begin(), m_instants.end());
  std::stable_sort(events.begin(), events.end(),
                   [](const Event& a, const Event& b) { return a.at < b.at; });
  std::string text;
  for (Event& event : events) {
    if (event.at != kFirst) event.json["ts"] = Microseconds(event.at);
    if (!text.empty()) text += ",\n";
    text += event.json.dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  return text;
}
