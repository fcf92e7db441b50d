#include "tests/system/MadeProduct.h"

#include <gtest/gtest.h>

#include <sstream>

namespace fs = std::filesystem;

MadeProduct& MadeProduct::Plugin(const std::string& id, const std::string& fixture,
                                 const std::string& inner) {
  Describe(id, inner);
  fs::copy_file(Fixture(fixture), m_site.Path("bin/" + id + ".dll"),
                fs::copy_options::overwrite_existing);
  return *this;
}

MadeProduct& MadeProduct::BrokenLibrary(const std::string& id, const std::string& content) {
  Describe(id, "");
  m_site.Write("bin/" + id + ".dll", content);
  return *this;
}

MadeProduct& MadeProduct::Element(const std::string& xml) {
  m_elements += xml;
  return *this;
}

HubResult MadeProduct::Run(const std::string& arguments, const HubSettings& settings) {
  return RunHub(Arguments(arguments), settings);
}

HubResult MadeProduct::RunUntilUp(const std::string& arguments, const HubSettings& settings) {
  return RunHubUntilUp("--bin " + Site().Bin() + " " + arguments, settings);
}

std::string MadeProduct::Arguments(const std::string& arguments) {
  return "run --bin " + Site().Bin() + " " + arguments;
}

const SiteCopy& MadeProduct::Site() {
  m_site.Write("Product.xml", "<ProductDescription><Product>NVX</Product><Version>2.6.0</Version>" +
                                  m_elements + "<Plugins>" + m_plugins +
                                  "</Plugins></ProductDescription>");
  m_site.Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers/>");
  m_site.Remove("bin/TevAddons");
  return m_site;
}

void MadeProduct::Describe(const std::string& id, const std::string& inner) {
  m_plugins += "<Plugin ID='" + id + "'/>\n";
  m_site.Write("bin/META_INFO/" + id + "/" + id + ".xml",
               "<Plugin>\n<Type>2</Type>\n<ID>" + id + "</ID>\n" + inner + "</Plugin>\n");
}

std::string DependsOn(const std::string& ids) {
  std::string list = "<DependencyList>";
  std::istringstream words(ids);
  for (std::string id; words >> id;) list += "<Plugin ID='" + id + "'/>\n";
  return list + "</DependencyList>";
}

fs::path Fixture(const std::string& name) {
  return fs::path(TEV_FIXTURES) / (name + ".dll");
}

RunningProduct::RunningProduct() {
  m_settings.state = m_state.Path();
  m_hub = std::make_unique<HubProcess>(m_product.Plugin("a.server").Arguments(""), m_settings);
  EXPECT_TRUE(m_hub->AwaitOutput("Up after"));
}

HubResult RunningProduct::RunAgain(const std::string& bin) const {
  return RunHubUntilUp("--bin " + bin, m_settings);
}

HubResult RunningProduct::Stop() {
  m_hub->RequestStop(StopKind::kTerminate);
  return m_hub->Wait();
}
