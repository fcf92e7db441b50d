// HUB check of a whole product, laid out by LayOutProduct: what the rules find beside what the
// frame makes of it, in all formats.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "fuzz/FuzzTarget.h"
#include "fuzz/ProductInput.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/PluginFrame/PluginManager.h"
#include "src/private/RunningProduct.h"
#include "workbench/check/CheckReport.h"
#include "workbench/check/FindingsJson.h"
#include "workbench/check/FindingsSarif.h"
#include "workbench/check/FindingsText.h"
#include "workbench/check/PackageReader.h"
#include "workbench/check/PluginLibraryReader.h"
#include "workbench/check/ProductReader.h"
#include "workbench/check/Rule.h"
#include "workbench/output/Text.h"

namespace fs = std::filesystem;

namespace {

FileFacts FactsOf(const fs::path& file) {
  FileFacts facts;
  const fs::file_status status = fs::status(file);
  if (fs::is_regular_file(status)) facts.kind = FileFacts::Kind::kFile;
  if (fs::is_directory(status)) facts.kind = FileFacts::Kind::kFolder;
  facts.identity = file.string();
  return facts;
}

/// Libraries are for the machine for which that of the plugin a is.
LibrarySystem System() {
  LibrarySystem system;
  system.executable = FuzzFolder::Instance().Path("bin/a.dll");
  system.folders = {FuzzFolder::Instance().Path("bin")};
  system.facts = &FactsOf;
  return system;
}

/// What the frame hands over; none when it refuses the product.
std::optional<HandedOver> AskFrame() {
  g_productName.clear();
  g_productVersion.clear();
  KPX_Init();
  const bool came = PluginFrame::CPluginManager().Init();
  std::optional<HandedOver> handedOver;
  if (came) handedOver = HandedOverOf(SnapshotPlatform());
  TevLPCFrameUnInit();
  KPX_UnInit();
  return handedOver;
}

std::size_t LinesOf(const CheckedProduct& product, const std::string& name) {
  for (const CheckedFile& file : product.files) {
    if (file.readName != name) continue;
    return static_cast<std::size_t>(std::count(file.text.begin(), file.text.end(), '\n')) + 1;
  }
  return 0;
}

void CheckPlace(const CheckedProduct& product, const Place& place) {
  Check(!place.file.empty(), "a finding names a file");
  if (place.line == 0) return;
  Check(static_cast<std::size_t>(place.line) <= LinesOf(product, place.file),
        "a finding's line is in its file");
}

void CheckFindings(const CheckedProduct& product, const RuleFindings& findings, bool isRefused) {
  bool saysRefused = false;
  for (const RuleFinding& finding : findings) {
    saysRefused = saysRefused || finding.refused;
    CheckPlace(product, finding.place);
    for (const RelatedPlace& related : finding.related) CheckPlace(product, related.place);
    Check(Escaped(finding.message).find('\n') == std::string::npos, "a message is one line");
  }
  Check(saysRefused == isRefused, "a finding says that the frame refuses the product, if it does");
}

}  // namespace

void Fuzz(const std::string& input) {
  LayOutProduct(input);
  const LocalNames names = SystemNames();
  const auto place = FindProduct(FuzzFolder::Instance().Path("bin"), names);
  Check(place.has_value(), "the product's folder is found");
  const auto product = ReadCheckedProduct(*place, names, 1);
  if (product->HoldsUpFrame()) return;
  ReadPackages(*product, *place, names);
  const LibrarySystem system = System();
  PluginLibraryReader libraries(*product, place->folder, names, system);
  libraries.Read();
  std::optional<HandedOver> handedOver = AskFrame();
  const bool isRefused = !handedOver;
  if (handedOver) UseModel(*product, std::move(*handedOver));
  libraries.Read();

  CheckReport report;
  report.rules = AllRules();
  report.findings = RunRules(AllRules(), *product);
  CheckFindings(*product, report.findings, isRefused);
  const auto json = nlohmann::json::parse(FindingsJson(report));
  Check(json["findings"].size() == report.findings.size(), "JSON has every finding");
  const auto sarif = nlohmann::json::parse(FindingsSarif(report));
  Check(sarif["runs"][0]["results"].size() == report.findings.size(), "SARIF has every finding");
  FindingsText(
      report, [](const std::string&, int) { return std::string("  <a b='c'/>"); }, TextStyle());
}
