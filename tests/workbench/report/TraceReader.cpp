#include "tests/workbench/report/TraceReader.h"

#include <sstream>
#include <stdexcept>

namespace {

using nlohmann::json;

std::string Ms(const json& event) {
  std::ostringstream text;
  text.precision(12);
  text << event.at("ts").get<double>() / 1000;
  return text.str();
}

}  // namespace

TraceReader::TraceReader(const std::string& text) : m_document(json::parse(text)) {
  for (const json& event : m_document.at("traceEvents")) Read(event);
  for (const auto& [key, row] : m_rows) {
    if (!row.open.empty()) m_faults += row.open.back() + " on " + row.name + " has no end\n";
  }
  for (const auto& arrow : m_arrows) m_faults += "the arrow " + arrow.first + " has no end\n";
}

void TraceReader::Read(const json& event) {
  const std::string phase = event.at("ph");
  const std::string track = "t" + event.at("tid").dump();
  if (phase == "M") {
    if (event.at("name") == "thread_name") {
      m_order.push_back(track);
      m_rows[track].name = event.at("args").at("name");
    }
    return;
  }
  const double time = event.at("ts");
  if (time < m_time) Fault("earlier than the event before it", event);
  m_time = time;
  if (phase == "B" || phase == "E") {
    if (m_rows.count(track) == 0) Fault("on a track without a name", event);
    return phase == "B" ? Begin(track, event) : End(track, event);
  }
  if (phase == "b" || phase == "e") {
    const std::string row = "w" + event.at("id").get<std::string>();
    if (m_rows.count(row) == 0) m_order.push_back(row);
    return phase == "b" ? Begin(row, event) : End(row, event);
  }
  if (phase == "s") return ArrowBegin(track, event);
  if (phase == "f") return ArrowEnd(track, event);
  if (phase != "i") Fault("of an unknown kind", event);
  m_instants += event.at("name").get<std::string>() + " at " + Ms(event) + "\n";
}

void TraceReader::Begin(const std::string& key, const json& event) {
  Row& row = m_rows[key];
  const bool isFirst = row.text.empty() || row.text.back() == '(';
  if (!row.open.empty() && !row.afterSlice) {
    row.text += " (";
  } else if (!isFirst) {
    row.text += ", ";
  }
  row.open.push_back(event.at("name"));
  row.text += row.open.back() + " " + Ms(event);
  row.afterSlice = false;
}

void TraceReader::End(const std::string& key, const json& event) {
  Row& row = m_rows[key];
  if (row.open.empty() || row.open.back() != event.at("name")) {
    return Fault("ends what is not the innermost open slice", event);
  }
  if (row.afterSlice) row.text += ")";
  row.text += ".." + Ms(event);
  row.open.pop_back();
  row.afterSlice = true;
}

void TraceReader::ArrowBegin(const std::string& row, const json& event) {
  if (m_rows[row].open.empty()) return Fault("begins outside of a slice", event);
  const std::string text = m_rows[row].open.front() + " " + Ms(event);
  if (!m_arrows.emplace(event.at("id").dump(), text).second) Fault("begins twice", event);
}

void TraceReader::ArrowEnd(const std::string& row, const json& event) {
  const auto begun = m_arrows.find(event.at("id").dump());
  if (begun == m_arrows.end()) return Fault("has not begun", event);
  if (m_rows[row].open.empty()) return Fault("ends outside of a slice", event);
  if (event.at("bp") != "e") return Fault("ends in the next slice", event);
  m_arrowsText += begun->second + " -> " + m_rows[row].open.front() + " " + Ms(event) + "\n";
  m_arrows.erase(begun);
}

void TraceReader::Fault(const std::string& text, const json& event) {
  m_faults += text + ": " + event.dump() + "\n";
}

std::string TraceReader::Tracks() const {
  std::string text;
  for (const std::string& key : m_order) {
    const Row& row = m_rows.at(key);
    if (key[0] == 't') text += row.name + ": " + row.text + "\n";
  }
  return text;
}

std::string TraceReader::Waiting() const {
  std::string text;
  for (const std::string& key : m_order) {
    if (key[0] == 'w') text += m_rows.at(key).text + "\n";
  }
  return text;
}

std::string TraceReader::Arrows() const {
  return m_arrowsText;
}

std::string TraceReader::Instants() const {
  return m_instants;
}

const json& TraceReader::Slice(const std::string& name, const std::string& category) const {
  return Find("B", name, category);
}

const json& TraceReader::Instant(const std::string& name) const {
  return Find("i", name, "event");
}

const json& TraceReader::Find(const char* phase, const std::string& name,
                              const std::string& category) const {
  for (const json& event : m_document.at("traceEvents")) {
    if (event.at("ph") == phase && event.at("name") == name && event.at("cat") == category) {
      return event;
    }
  }
  throw std::out_of_range("no event is named " + name);
}
