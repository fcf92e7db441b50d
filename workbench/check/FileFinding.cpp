#include "workbench/check/FileFinding.h"

#include <utility>

namespace {

const char* EmptyMeans(FileKind kind) {
  switch (kind) {
    case FileKind::kProduct:
      return "no plugin and no sub platform is started, and no addon is read";
    case FileKind::kDrivers:
      return "the product has no drivers";
    case FileKind::kPortal:
      return "the portal has no menus";
    case FileKind::kPlatform:
      return "the platform's settings are empty";
    case FileKind::kPlugin:
      return "the plugin has no type and no ID, and is not started";
    case FileKind::kInstalled:
      return "no addon and no tool counts as installed";
    case FileKind::kAddonList:
      return "no addon is offered";
    case FileKind::kToolList:
      return "no tool is offered";
    case FileKind::kAddon:
      return "the addon does not count as installed";
    case FileKind::kTool:
      return "the tool does not count as installed";
  }
  return "";
}

}  // namespace

std::string DescribedId(const CheckedFile& file) {
  const bool describes = file.kind == FileKind::kPlugin || file.kind == FileKind::kAddon ||
                         file.kind == FileKind::kTool;
  if (!describes) return std::string();
  const std::size_t begin = file.name.rfind('/') + 1;
  return file.name.substr(begin, file.name.rfind('.') - begin);
}

RuleFinding MakeFinding(const CheckedFile& file, const TextPlace& place, std::string message,
                        const std::string& subject) {
  RuleFinding finding;
  finding.place = PlaceOf(file, place);
  finding.message = std::move(message);
  finding.plugin = DescribedId(file);
  finding.subject = file.name.substr(file.name.rfind('/') + 1);
  if (!subject.empty()) finding.subject += ": " + subject;
  return finding;
}

std::string ReadsAsEmpty(FileKind kind) {
  return std::string("the whole file reads as empty: ") + EmptyMeans(kind);
}

std::string Sentence(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] += 'A' - 'a';
  return text;
}

std::string Times(std::size_t number) {
  return number == 1 ? std::string() : ", " + std::to_string(number) + " times";
}
