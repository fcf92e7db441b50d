#include "host/ProductReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

#include "host/ParserMessages.h"
#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "sdk/base/path.h"
#include "workbench/product/ModelFiles.h"

namespace {

constexpr std::size_t kMostSentences = 20;
constexpr char kUnknownType[] =
    ": its Type is neither 1 (executable) nor 2 (library): the plugin is dropped";

Finding Error(const std::string& text) {
  return {Severity::kError, text};
}

std::string FrameReason(const std::vector<FrameEvent>& notes) {
  std::string words = "Frame_Init failed and logged no reason";
  for (const FrameEvent& note : notes) {
    if (note.kind == FrameEvent::Kind::kStepThrew) {
      return "Frame_Init ended with an exception: " + note.reason;
    }
    if (note.kind == FrameEvent::Kind::kStepThrewNoException) {
      return "Frame_Init threw something that is no exception object";
    }
    if (note.kind == FrameEvent::Kind::kPlatformInitFailed) return "the platform did not come up";
    if (!note.reason.empty()) words = "the frame refused the product: " + note.reason;
  }
  return words;
}

}  // namespace

std::int32_t InitialiseFrame(const FrameLibrary& frame) {
  const ParserMessages messages;
  return frame.Init();
}

ProductName NameOfProduct() {
  try {
    return ReadProductName(PathFromLocal(GetCurExeDir()), SystemNames());
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::vector<Finding> ProductFindings(const ProductModel& model,
                                     const std::vector<FrameEvent>& notes) {
  const LocalNames names = SystemNames();
  const auto bin = PathFromLocal(GetCurExeDir());
  std::vector<Finding> findings = FindingsBeforeStart(bin, model, names);
  const std::vector<ModelFile> files = ReadModelFiles(bin, names);
  for (Finding& finding : FindingsOfFiles(files, names)) findings.push_back(std::move(finding));
  for (const FrameEvent& note : notes) {
    if (note.kind != FrameEvent::Kind::kTypeUnknown) continue;
    const auto path = PathFromLocal(note.path).lexically_normal().make_preferred();
    // A file that reads as empty has no type either; FindingsOfFiles has reported it already.
    const bool isGood = std::any_of(files.begin(), files.end(), [&](const ModelFile& file) {
      return file.path == path && file.state == ModelFile::State::kGood;
    });
    if (isGood) findings.push_back(Error(names.fromPath(path) + kUnknownType));
  }
  const bool isEmpty = model.ServerPluginDescriptions.empty() && model.SubPlatforms.empty() &&
                       model.ExePluginDescriptions.empty() &&
                       model.DriverPluginDescriptions.empty();
  if (isEmpty && findings.empty()) {
    const auto product = (bin / "../Product.xml").lexically_normal().make_preferred();
    findings.push_back(
        {Severity::kWarning, names.fromPath(product) + " lists no plugin: nothing is started"});
  }
  return findings;
}

std::optional<Finding> FindingOf(const FrameEvent& note) {
  switch (note.kind) {
    case FrameEvent::Kind::kLpcStopFailed:
      return Error(
          "the local-procedure-call framework did not stop; the plugins were neither "
          "stopped nor freed");
    case FrameEvent::Kind::kNoPoolForStop:
      return Error(
          "there were no threads for the stop; the plugins were neither stopped nor freed");
    case FrameEvent::Kind::kStepThrewNoException:
      return Error("a step of the frame ended with something that is no exception object");
    case FrameEvent::Kind::kStepThrew:
      return Error("a step of the frame ended with an exception: " + note.reason);
    default:
      return std::nullopt;
  }
}

std::vector<std::string> FailureSentences(const std::vector<FrameEvent>& notes) {
  const LocalNames names = SystemNames();
  std::vector<std::string> sentences;
  try {
    const auto bin = PathFromLocal(GetCurExeDir());
    sentences = UnreadableProductSentences(ReadModelFiles(bin, names), names);
  } catch (const std::bad_alloc&) {
    // The frame ran out of memory as well: its own reason says so.
  }
  if (sentences.empty()) return {FrameReason(notes)};
  return sentences;
}

std::optional<std::string> StartFailure(const std::vector<FrameEvent>& notes) {
  for (const FrameEvent& note : notes) {
    if (note.kind == FrameEvent::Kind::kNoPoolForStart) return "there are no threads for them";
    if (note.kind == FrameEvent::Kind::kStepThrew) return note.reason;
    if (note.kind == FrameEvent::Kind::kStepThrewNoException) {
      return "a step threw something that is no exception object";
    }
  }
  return std::nullopt;
}

std::vector<std::string> FirstSentences(std::vector<std::string> sentences) {
  if (sentences.size() > kMostSentences) {
    const std::size_t more = sentences.size() - kMostSentences;
    sentences.resize(kMostSentences);
    sentences.push_back(fmt::format("and {} more of the product's files cannot be read", more));
  }
  return sentences;
}
