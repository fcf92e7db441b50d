#include "workbench/record/FlightRecord.h"

#include <algorithm>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

namespace {

using Json = nlohmann::ordered_json;
using Kind = RunEvent::Kind;
using Result = RunEvent::Result;

/// A name in the file and the value that it stands for.
template <typename Value>
struct Named {
  Value value;
  const char* name;
};

constexpr Named<Result> kResults[] = {{Result::kOk, "ok"},
                                      {Result::kFailed, "failed"},
                                      {Result::kNotLoaded, "not-loaded"},
                                      {Result::kRefused, "refused"}};
constexpr Named<Severity> kSeverities[] = {{Severity::kNote, Word(Severity::kNote)},
                                           {Severity::kWarning, Word(Severity::kWarning)},
                                           {Severity::kError, Word(Severity::kError)}};

/// The members of an event's line in addition to its name, time and thread.
enum Member : unsigned {
  kPhase = 1U << 0U,
  kPlugin = 1U << 1U,
  kTask = 1U << 2U,
  kResult = 1U << 3U,
  kMs = 1U << 4U,
  kCount = 1U << 5U,
  kExitStatus = 1U << 6U,
  kSeverity = 1U << 7U,
  kStatus = 1U << 8U,
  kWaitedFor = 1U << 9U,
  kReason = 1U << 10U,
  kText = 1U << 11U,
  kTotals = 1U << 12U
};

struct EventRow {
  Kind kind;
  const char* name;
  unsigned always;
  unsigned unlessEmpty;
};

constexpr EventRow kEvents[] = {
    {Kind::kPhaseBegin, "phase-begin", kPhase, 0},
    {Kind::kPhaseEnd, "phase-end", kPhase, kMs},
    {Kind::kReady, "ready", kPhase | kPlugin, kWaitedFor},
    {Kind::kPosted, "posted", kTask, 0},
    {Kind::kTaskBegin, "task-begin", kTask, 0},
    {Kind::kLoadBegin, "load-begin", kPlugin | kTask, 0},
    {Kind::kLoadEnd, "load-end", kPlugin | kResult, kReason},
    {Kind::kInitBegin, "init-begin", kPlugin, 0},
    {Kind::kInitEnd, "init-end", kPlugin | kResult | kMs, kReason},
    {Kind::kUnInitBegin, "uninit-begin", kPlugin, 0},
    {Kind::kUnInitEnd, "uninit-end", kPlugin | kResult | kMs, kReason},
    {Kind::kCounted, "counted", kPhase | kPlugin | kResult | kCount, kReason},
    {Kind::kTaskEnd, "task-end", kTask, 0},
    {Kind::kUp, "up", kMs, 0},
    {Kind::kStopRequest, "stop-request", kText, 0},
    {Kind::kFinding, "finding", kSeverity | kText, 0},
    {Kind::kCrash, "crash", kText, kPlugin | kPhase},
    {Kind::kEnd, "end", kStatus | kExitStatus | kTotals | kText, 0}};

const EventRow& RowOf(Kind kind) {
  for (const EventRow& row : kEvents) {
    if (row.kind == kind) return row;
  }
  throw std::logic_error("an event of no kind");
}

template <typename Value, std::size_t N>
const char* NameOf(const Named<Value> (&table)[N], Value value) {
  for (const Named<Value>& named : table) {
    if (named.value == value) return named.name;
  }
  return "";
}

template <typename Value, std::size_t N>
Value ValueOf(const Named<Value> (&table)[N], const std::string& name) {
  for (const Named<Value>& named : table) {
    if (name == named.name) return named.value;
  }
  throw std::invalid_argument(name);
}

/// Calls `visit(member, name, field)` for each member of an event's line, in the line's order.
template <typename Event, typename Visit>
void VisitMembers(Event& event, Visit visit) {
  visit(kPhase, "phase", event.phase);
  visit(kPlugin, "plugin", event.plugin);
  visit(kTask, "task", event.task);
  visit(kResult, "result", event.result);
  visit(kMs, "ms", event.milliseconds);
  visit(kCount, "count", event.number);
  visit(kSeverity, "severity", event.severity);
  visit(kStatus, "status", event.status);
  visit(kExitStatus, "exitStatus", event.number);
  visit(kTotals, "totals", event.totals);
  visit(kWaitedFor, "waitedFor", event.text);
  visit(kReason, "reason", event.text);
  visit(kText, "text", event.text);
}

/// Calls `visit(name, field)` for each of the totals.
template <typename Totals, typename Visit>
void VisitTotals(Totals& totals, Visit visit) {
  visit("plugins", totals.plugins);
  visit("started", totals.started);
  visit("initFailed", totals.initFailed);
  visit("notLoaded", totals.notLoaded);
  visit("stopped", totals.stopped);
  visit("stopRefused", totals.stopRefused);
}

/// Whether a member that may be left out has no value.
template <typename Field>
bool Empty(const Field&) {
  return false;
}
bool Empty(const std::string& text) {
  return text.empty();
}
bool Empty(std::int64_t number) {
  return number < 0;
}

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Whether a text needs no escaping in JSON.
bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c >= 0x20 && c < 0x7f && c != '"' && c != '\\'; });
}

// An event's line is composed without a JSON document, which would take ten times as long: plugins
// wait until the line is written.

void Append(std::string& line, const std::string& text) {
  if (IsPlain(text)) {
    line.append(1, '"').append(text).append(1, '"');
  } else {
    line += Dump(text);
  }
}
void Append(std::string& line, std::int64_t number) {
  line += std::to_string(number);
}
void Append(std::string& line, std::uint64_t number) {
  line += std::to_string(number);
}
void Append(std::string& line, const RunTotals& totals) {
  const char* before = "{\"";
  VisitTotals(totals, [&](const char* name, std::int64_t number) {
    line.append(before).append(name).append("\":");
    Append(line, number);
    before = ",\"";
  });
  line += '}';
}
void Append(std::string& line, Result result) {
  line.append(1, '"').append(NameOf(kResults, result)).append(1, '"');
}
void Append(std::string& line, Severity severity) {
  line.append(1, '"').append(Word(severity)).append(1, '"');
}

// A member of the wrong type throws, so that its line counts as unreadable.

void Read(const Json& json, const char* name, std::string& value) {
  const auto member = json.find(name);
  if (member != json.end()) value = member->get<std::string>();
}

void Read(const Json& json, const char* name, std::vector<std::string>& value) {
  const auto member = json.find(name);
  if (member != json.end()) value = member->get<std::vector<std::string>>();
}

template <typename Integer>
void ReadInteger(const Json& json, const char* name, Integer& value) {
  const auto member = json.find(name);
  if (member == json.end()) return;
  if (!member->is_number_integer()) throw std::invalid_argument(name);
  value = member->get<Integer>();
}

void Read(const Json& json, const char* name, std::int64_t& value) {
  ReadInteger(json, name, value);
}
void Read(const Json& json, const char* name, std::uint64_t& value) {
  ReadInteger(json, name, value);
}
void Read(const Json& json, const char* name, int& value) {
  ReadInteger(json, name, value);
}
void Read(const Json& json, const char* name, RunTotals& value) {
  const auto member = json.find(name);
  if (member == json.end()) return;
  VisitTotals(value, [&](const char* total, auto& number) { Read(*member, total, number); });
}
void Read(const Json& json, const char* name, Result& value) {
  value = ValueOf(kResults, json.at(name).get<std::string>());
}
void Read(const Json& json, const char* name, Severity& value) {
  value = ValueOf(kSeverities, json.at(name).get<std::string>());
}

/// The schema number of the head; throws when `json` is no head.
std::int64_t ReadSchema(const Json& json) {
  if (json.at("record").get<std::string>() != "head") throw std::invalid_argument("record");
  std::int64_t schema = 0;
  Read(json, "schema", schema);
  return schema;
}

RunHead ReadHead(const Json& json) {
  RunHead head;
  Read(json, "run", head.run);
  Read(json, "time", head.time);
  Read(json, "zone", head.zone);
  Read(json, "ns", head.nanoseconds);
  Read(json, "pid", head.pid);
  Read(json, "host", head.host);
  Read(json, "hubVersion", head.hubVersion);
  Read(json, "frameVersion", head.frameVersion);
  Read(json, "platformVersion", head.platformVersion);
  Read(json, "commandLine", head.commandLine);
  Read(json, "product", head.product);
  Read(json, "productVersion", head.productVersion);
  Read(json, "path", head.path);
  Read(json, "cores", head.cores);
  Read(json, "sleep", head.sleep);
  return head;
}

PluginHead ReadPlugin(const Json& json) {
  PluginHead plugin;
  Read(json, "id", plugin.id);
  Read(json, "kind", plugin.kind);
  Read(json, "version", plugin.version);
  Read(json, "library", plugin.library);
  Read(json, "librarySize", plugin.librarySize);
  Read(json, "dependsOn", plugin.dependsOn);
  return plugin;
}

RunEvent ReadEvent(const Json& json) {
  const std::string name = json.at("event").get<std::string>();
  for (const EventRow& row : kEvents) {
    if (name != row.name) continue;
    RunEvent event;
    event.kind = row.kind;
    Read(json, "ns", event.nanoseconds);
    Read(json, "thread", event.thread);
    VisitMembers(event, [&](Member member, const char* key, auto& field) {
      if (((row.always | row.unlessEmpty) & member) != 0) Read(json, key, field);
    });
    return event;
  }
  throw std::invalid_argument(name);
}

/// Reads a line after the head; throws when it is unreadable.
void ReadLine(const std::string& line, FlightRecord& record) {
  const Json json = Json::parse(line);
  const std::string part = json.at("record").get<std::string>();
  if (part == "plugin") {
    record.plugins.push_back(ReadPlugin(json));
  } else if (part == "event") {
    record.events.push_back(ReadEvent(json));
  } else {
    throw std::invalid_argument(part);
  }
}

/// The reason of the system call that has just failed.
std::string SystemReason() {
  return std::error_code(errno, std::generic_category()).message();
}

}  // namespace

bool RunTotals::operator==(const RunTotals& other) const {
  return plugins == other.plugins && started == other.started && initFailed == other.initFailed &&
         notLoaded == other.notLoaded && stopped == other.stopped &&
         stopRefused == other.stopRefused;
}

std::string RecordLine(const RunHead& head) {
  return Dump({{"record", "head"},
               {"schema", RunHead::kSchema},
               {"run", head.run},
               {"time", head.time},
               {"zone", head.zone},
               {"ns", head.nanoseconds},
               {"pid", head.pid},
               {"host", head.host},
               {"hubVersion", head.hubVersion},
               {"frameVersion", head.frameVersion},
               {"platformVersion", head.platformVersion},
               {"commandLine", head.commandLine},
               {"product", head.product},
               {"productVersion", head.productVersion},
               {"path", head.path},
               {"cores", head.cores},
               {"sleep", head.sleep}});
}

std::string RecordLine(const PluginHead& plugin) {
  Json json = {{"record", "plugin"},
               {"id", plugin.id},
               {"kind", plugin.kind},
               {"version", plugin.version},
               {"library", plugin.library}};
  if (plugin.librarySize >= 0) json["librarySize"] = plugin.librarySize;
  json["dependsOn"] = plugin.dependsOn;
  return Dump(json);
}

std::string RecordLine(const RunEvent& event) {
  const EventRow& row = RowOf(event.kind);
  std::string line;
  line.reserve(256);
  line.append(R"({"record":"event","event":")").append(row.name).append(R"(","ns":)");
  Append(line, event.nanoseconds);
  line += R"(,"thread":)";
  Append(line, event.thread);
  VisitMembers(event, [&](Member member, const char* name, const auto& field) {
    const bool filled = (row.unlessEmpty & member) != 0 && !Empty(field);
    if ((row.always & member) == 0 && !filled) return;
    line.append(R"(,")").append(name).append(R"(":)");
    Append(line, field);
  });
  line += '}';
  return line;
}

RecordWriter::RecordWriter(const std::filesystem::path& file) : m_file(file) {
  // Without a buffer, so that a line is one write.
  m_stream.rdbuf()->pubsetbuf(nullptr, 0);
  m_stream.open(file, std::ios::binary | std::ios::trunc);
  if (m_stream.is_open()) {
    m_stream.close();
    m_stream.open(file, std::ios::binary | std::ios::app);
  }
  if (!m_stream.is_open()) {
    const std::string reason = SystemReason();
    throw std::runtime_error("the record cannot be written to " + file.u8string() + ": " + reason);
  }
}

void RecordWriter::WriteLine(const std::string& line) {
  std::string whole;
  whole.reserve(line.size() + 2);
  whole.append(m_nextAfterFailure ? "\n" : "").append(line).append(1, '\n');
  m_stream.write(whole.data(), static_cast<std::streamsize>(whole.size()));
  m_nextAfterFailure = !m_stream;
  if (!m_stream) m_lost += 1 + static_cast<std::size_t>(std::count(line.begin(), line.end(), '\n'));
  m_stream.clear();
}

FlightRecord ReadFlightRecord(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    const std::string reason = SystemReason();
    throw std::runtime_error(file.u8string() + " cannot be opened: " + reason);
  }
  FlightRecord record;
  std::string line;
  std::getline(stream, line);
  std::int64_t schema = RunHead::kSchema;
  try {
    const Json head = Json::parse(line);
    schema = ReadSchema(head);
    if (schema == RunHead::kSchema) record.head = ReadHead(head);
  } catch (const std::exception&) {
    throw std::runtime_error(file.u8string() +
                             " is no flight record: its first line is not a head");
  }
  if (schema != RunHead::kSchema) {
    throw std::runtime_error(file.u8string() + " is a flight record of schema " +
                             std::to_string(schema) + "; this version reads schema " +
                             std::to_string(RunHead::kSchema));
  }
  while (std::getline(stream, line)) {
    if (line.empty()) continue;  // a line that follows a lost line begins with a line feed
    try {
      ReadLine(line, record);
    } catch (const std::exception&) {
      if (line.rfind(R"({"record":"head")", 0) == 0) {
        throw std::runtime_error(file.u8string() +
                                 " has the records of several runs; name a file for each");
      }
      ++record.unreadableLines;
    }
  }
  return record;
}
