#include <string>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr std::size_t kMostInOrder = 900;  // keys with three digits, from 100 to 999

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::size_t count =
      product.model.ServerPluginDescriptions.size() + product.model.SubPlatforms.size();
  if (count <= kMostInOrder) return;
  RuleFinding finding;
  finding.place = PlaceAt(product.File(FileKind::kProduct), "Plugins");
  finding.message = std::to_string(count) +
                    " plugins and sub platforms: the frame starts those that are ready at the same "
                    "time in the order of their IDs, the sub platforms last, but from the 901st on "
                    "they come between the first ones; dependencies are kept";
  finding.subject = "Plugins";
  findings.push_back(std::move(finding));
}

}  // namespace

TEV_RULE(ManyPlugins) = {
    "TEV215",
    Severity::kNote,
    "More than 900 plugins and sub platforms",
    "The frame numbers plugins and sub platforms from 100 and orders them by these numbers as "
    "texts. \"1000\" is a smaller text than \"101\", so that from the 901st on they are visited "
    "among the first. Only the order of plugins that wait for nothing changes.",
    "A product with 901 plugins",
    "Nothing has to be done. A plugin that needs another one must depend on it anyway.",
    &Check};
