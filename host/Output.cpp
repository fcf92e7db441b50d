#include "host/Output.h"

#include "reference/os/SystemFile.h"
#include "workbench/output/Text.h"

namespace {

constexpr std::chrono::seconds kLongestFlush{5};

}  // namespace

Output::Output()
    : m_writer(*new BackgroundWriter("output",
                                     [this](const std::string& text) {
                                       return m_output.Write(text) ? std::string()
                                                                   : m_output.Error();
                                     })),
      m_errors(*new BackgroundWriter("errors", [](const std::string& text) {
        return WriteWhole(StandardError(), text, kForEver) ? std::string() : "it cannot be written";
      })) {}

void Output::WriteError(const std::string& sentence) {
  const std::string text = "HUB: " + sentence;
  if (!m_output.IsTerminalOfErrors()) return m_errors.Write(text + "\n");
  const auto columns = static_cast<std::size_t>(m_output.Columns());
  for (const std::string& line : Wrapped(text, columns, kSentenceIndent)) {
    m_writer.Write(line + "\n");
  }
}

void Output::Flush() {
  m_writer.Flush(kLongestFlush);
  m_errors.Flush(kLongestFlush);
}
