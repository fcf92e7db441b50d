#include "workbench/check/JudgedDependency.h"

#include <gmock/gmock.h>

#include <deque>
#include <string>

#include "workbench/check/DependentTypes.h"

using testing::SizeIs;

namespace {

/// Plugins "0.server", "1.server", ..., each with one dependency on the same ID.
class Dependents {
 public:
  explicit Dependents(int plugins) {
    m_node.attributes.push_back({"ID", "", "base.server", {7, 13}});
    m_file.readName = "file.xml";
    for (int i = 0; i < plugins; ++i) {
      Description& plugin = m_plugins.emplace_back();
      plugin.file = &m_file;
      plugin.id = std::to_string(i) + ".server";
      Dependency on;
      on.node = &m_node;
      on.id = "base.server";
      plugin.dependencies.push_back(on);
      m_dependencies.push_back({&plugin, PluginRole::kLibrary, nullptr});
    }
    for (JudgedDependency& one : m_dependencies) one.on = &one.plugin->dependencies.front();
  }

  RuleFindings ByTarget() const {
    RuleFindings findings;
    FindingsByTarget byTarget(findings);
    for (const JudgedDependency& one : m_dependencies) byTarget.Add(one, "message");
    return findings;
  }

 private:
  XmlNode m_node;
  CheckedFile m_file;
  std::deque<Description> m_plugins;
  std::vector<JudgedDependency> m_dependencies;
};

TEST(FindingsByTarget, OneFindingHasTheOthersAsRelatedPlaces) {
  const RuleFindings findings = Dependents(3).ByTarget();
  ASSERT_THAT(findings, SizeIs(1));
  EXPECT_EQ("message", findings[0].message);
  EXPECT_EQ("0.server", findings[0].plugin);
  EXPECT_EQ("base.server", findings[0].subject);
  ASSERT_THAT(findings[0].related, SizeIs(2));
  EXPECT_EQ("\"1.server\" depends on \"base.server\" too", findings[0].related[0].message);
  EXPECT_EQ("file.xml", findings[0].related[1].place.file);
  EXPECT_EQ(7, findings[0].related[1].place.line);
  EXPECT_EQ(13, findings[0].related[1].place.column);
}

TEST(FindingsByTarget, BehindTwentyRelatedPlacesTheNumberOfTheOthersStands) {
  const RuleFindings findings = Dependents(24).ByTarget();
  ASSERT_THAT(findings, SizeIs(1));
  ASSERT_THAT(findings[0].related, SizeIs(20));
  EXPECT_EQ("\"20.server\" depends on \"base.server\" too, as 3 more do",
            findings[0].related.back().message);
}

}  // namespace
