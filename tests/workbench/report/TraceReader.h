#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Reads a trace as a viewer does.
class TraceReader {
 public:
  /// Throws when the text is no JSON.
  explicit TraceReader(const std::string& text);

  const nlohmann::json& Document() const { return m_document; }

  /// What a viewer could not display as it is meant, a line each: slices that do not nest, spans
  /// and arrows without an end, arrows that begin or end outside of a slice, times that go back.
  const std::string& Faults() const { return m_faults; }

  /// Each track with its slices: "thread 1: a 1..4 (load 1..2, Init 2..4)"; times in milliseconds.
  std::string Tracks() const;

  /// The asynchronous spans in the same form, a line each.
  std::string Waiting() const;

  /// "a 3.9 -> b 7", in the order of their ends, with the outermost slices at both ends.
  std::string Arrows() const;

  /// "up at 8".
  std::string Instants() const;

  /// The event that begins the first slice of this name and category, or the first instant of this
  /// name. Throws when there is none.
  const nlohmann::json& Slice(const std::string& name, const std::string& category) const;
  const nlohmann::json& Instant(const std::string& name) const;

 private:
  const nlohmann::json& Find(const char* phase, const std::string& name,
                             const std::string& category) const;
  void Read(const nlohmann::json& event);
  void Begin(const std::string& row, const nlohmann::json& event);
  void End(const std::string& row, const nlohmann::json& event);
  void ArrowBegin(const std::string& row, const nlohmann::json& event);
  void ArrowEnd(const std::string& row, const nlohmann::json& event);
  void Fault(const std::string& text, const nlohmann::json& event);

  struct Row {
    std::string name;
    std::vector<std::string> open;  // names of slices
    bool afterSlice = false;
    std::string text;
  };

  nlohmann::json m_document;
  std::string m_faults;
  double m_time = 0;
  std::vector<std::string> m_order;  // keys of rows
  std::map<std::string, Row> m_rows;
  std::map<std::string, std::string> m_arrows;  // by id, that have begun
  std::string m_arrowsText;
  std::string m_instants;
};
