#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/system/HubProcess.h"

/// A product that a test composes: plugins with any ID, whose libraries are fixtures.
class MadeProduct {
 public:
  /// Adds a plugin whose library is a copy of `fixture`. `inner`: further elements of its
  /// description.
  MadeProduct& Plugin(const std::string& id, const std::string& fixture = "well_behaved",
                      const std::string& inner = "");

  /// Adds a plugin whose library is a file with this content.
  MadeProduct& BrokenLibrary(const std::string& id, const std::string& content);

  /// Adds an element to Product.xml.
  MadeProduct& Element(const std::string& xml);

  /// Runs `HUB run` on the product with these further arguments.
  HubResult Run(const std::string& arguments, const HubSettings& settings = {});

  /// The same with a stop once the product is up; see RunHubUntilUp.
  HubResult RunUntilUp(const std::string& arguments, const HubSettings& settings = {});

  /// The arguments of HUB for such a run.
  std::string Arguments(const std::string& arguments);

  /// Writes the product to disk as composed so far and returns its folder.
  const SiteCopy& Site();

 private:
  void Describe(const std::string& id, const std::string& inner);

  SiteCopy m_site;
  std::string m_plugins;
  std::string m_elements;
};

/// The description's element that makes a plugin depend on others: "a b" names two.
std::string DependsOn(const std::string& ids);

/// The library file of a fixture.
std::filesystem::path Fixture(const std::string& name);

/// A HUB that runs a product. The constructor starts it, and Stop ends it.
class RunningProduct {
 public:
  RunningProduct();

  /// Runs another HUB on the same product, whose bin folder is given as `bin`, until it is up.
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
