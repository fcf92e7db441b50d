#include "host/Output.h"

#include "reference/os/SystemFile.h"

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

void Output::Flush() {
  m_writer.Flush(kLongestFlush);
  m_errors.Flush(kLongestFlush);
}
