// Prints a flight record of every kind of line, each with all its members and with none of those
// that may be left out. The tests of the schemas read it.

#include <iostream>
#include <stdexcept>

#include "tests/support/FieldCount.h"
#include "workbench/record/FlightRecord.h"

namespace {

RunEvent Event(RunEvent::Kind kind) {
  RunEvent event;
  event.kind = kind;
  event.thread = 1;
  event.phase = RunPhase::kStart;
  event.plugin = "a";
  event.task = 1;
  event.milliseconds = 1;
  event.number = 1;
  event.result = RunEvent::Result::kOk;
  event.status = "up";
  event.text = "text";
  static_assert(FieldCount<RunEvent>() == 13, "fill in the new field here");
  return event;
}

RunEvent BareEvent(RunEvent::Kind kind) {
  RunEvent event;
  event.kind = kind;
  return event;
}

PluginHead Plugin() {
  PluginHead plugin;
  plugin.librarySize = 1;
  static_assert(FieldCount<PluginHead>() == 6, "fill in the new field here");
  return plugin;
}

}  // namespace

int main() {
  std::cout << RecordLine(RunHead()) << "\n"
            << RecordLine(Plugin()) << "\n"
            << RecordLine(PluginHead()) << "\n";
  for (int kind = 0;; ++kind) {
    try {
      std::cout << RecordLine(Event(static_cast<RunEvent::Kind>(kind))) << "\n"
                << RecordLine(BareEvent(static_cast<RunEvent::Kind>(kind))) << "\n";
    } catch (const std::logic_error&) {  // behind the last kind
      return 0;
    }
  }
}
