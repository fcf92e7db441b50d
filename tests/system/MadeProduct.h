#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/system/HubProcess.h"

/// A product made by a test: plugins under names of the test's own, whose libraries are fixtures.
class MadeProduct {
 public:
  /// A plugin whose library is a copy of the fixture of that name. `inner`: elements for its
  /// description.
  MadeProduct& Plugin(const std::string& id, const std::string& fixture = "well_behaved",
                      const std::string& inner = "");

  /// A plugin whose library has this content.
  MadeProduct& BrokenLibrary(const std::string& id, const std::string& content);

  /// An element of Product.xml beside the plugins.
  MadeProduct& Element(const std::string& xml);

  /// Runs HUB `run` on it with these further arguments.
  HubResult Run(const std::string& arguments, const HubSettings& settings = {});

  /// The command line for that.
  std::string Arguments(const std::string& arguments);

  /// The product on disk, with all that has been asked for so far.
  const SiteCopy& Site();

 private:
  void Describe(const std::string& id, const std::string& inner);

  SiteCopy m_site;
  std::string m_plugins;
  std::string m_elements;
};

/// The description's element that makes a plugin depend on others: "a b" names two.
std::string DependsOn(const std::string& ids);

/// The file of a fixture.
std::filesystem::path Fixture(const std::string& name);

/// A product that a HUB runs, from the constructor on until Stop.
class RunningProduct {
 public:
  RunningProduct();

  /// What another HUB says of the same product that it finds as `bin`, and how it ends.
  HubResult RunAgain(const std::string& bin) const;

  /// Stops the first HUB.
  HubResult Stop();

  const SiteCopy& Site() { return m_product.Site(); }

 private:
  TemporaryFolder m_state;
  HubSettings m_settings;
  MadeProduct m_product;
  std::unique_ptr<HubProcess> m_hub;
};
