#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/private/XmlList.h"

// What the catalogue, the installed-products file and the descriptions say of addons and tools,
// from elements to records.

namespace TevModelParse {

/// What both catalogues say of an entry at `path`.
inline void ReadCatalogueEntry(AddonBaseModel& entry, const CXmlProto& document,
                               const std::string& path) {
  entry.ID = document.GetNodeText(path + "/ID", "");
  entry.Icon = document.GetNodeText(path + "/Icon", "");
  entry.NameKey = document.GetNodeText(path + "/NameKey", "");
  entry.FunctionalOverviewKey = document.GetNodeText(path + "/FunctionalOverviewKey", "");
  entry.Version = document.GetNodeText(path + "/Version", "");
  entry.PackageSize = document.GetNodeInt(path + "/PackageSize", 0);
}

/// What both kinds of description, with the root element `root`, say of themselves.
inline void ReadDescriptionHead(AddonBaseModel& entry, const CXmlProto& document,
                                const std::string& root) {
  entry.NameKey = document.GetNodeText(root + "/NameKey", "");
  entry.Icon = document.GetNodeText(root + "/Icon", "");
  entry.FunctionalOverviewKey = document.GetNodeText(root + "/FunctionalOverviewKey", "");
  entry.Version = document.GetNodeText(root + "/Version", "");
  // A tool is asked for the addon's element too, so it has the default unless its file carries one.
  entry.CompatibleVersion = document.GetNodeText("/AddonDescription/CompatibleVersion", "1.0.0");
  entry.Source = document.GetNodeText(root + "/Source", "");
  entry.HaveClientPackage = document.GetNodeInt(root + "/HaveClientPackage", -1) == 1;
}

/// What the installed-products file says of the addon or tool at `path`; `directory` ends in "/".
template <typename Entry>
Entry ReadInstalledEntry(const CXmlProto& document, const std::string& path,
                         const std::string& directory) {
  Entry entry;
  entry.ID = document.GetNodeProp(path, "ID", "");
  entry.InstalledVersion = document.GetNodeProp(path, "Version", "");
  entry.ClientPackageName = document.GetNodeProp(path, "ClientPackageName", "");
  entry.LastModifyTime = document.GetNodeProp(path, "LastModifyTime", "");
  entry.ClientPackageMD5 = document.GetNodeProp(path, "ClientPackageMD5", "");
  entry.InstallPath = directory + entry.ID + "/";
  return entry;
}

/// The applications at `listPath`.
inline std::vector<AddonApplication> ReadApplications(const CXmlProto& document,
                                                      const std::string& listPath) {
  std::vector<AddonApplication> applications;
  ReadList(document, listPath, [&](const std::string& path) {
    AddonApplication application;
    application.ID = document.GetNodeText(path + "/ID", "");
    application.Icon = document.GetNodeText(path + "/Icon", "");
    application.NameKey = document.GetNodeText(path + "/NameKey", "");
    application.FunctionalOverviewKey = document.GetNodeText(path + "/FunctionalOverviewKey", "");
    application.InstallUDF = document.GetNodeText(path + "/InstallUDF", "");
    application.FunctionUDF = document.GetNodeText(path + "/FunctionUDF", "");
    application.RelatedApplicationID = document.GetNodeText(path + "/RelatedApplicationID", "");
    applications.push_back(std::move(application));
  });
  return applications;
}

/// Appends the plugins and the services that an addon's description lists.
inline void ReadPluginsAndServices(AddonModel& addon, const CXmlProto& document) {
  ReadList(document, "/AddonDescription/Plugins/Plugin", [&](const std::string& path) {
    ProductPluginEntry entry;
    entry.Type = document.GetNodeProp(path, "Category", "");
    entry.ID = document.GetNodeProp(path, "ID", "");
    entry.Version = document.GetNodeProp(path, "Version", "");
    addon.Plugins.push_back(std::move(entry));
  });
  ReadList(document, "/AddonDescription/Services/Service", [&](const std::string& path) {
    AddonService service;
    service.ID = document.GetNodeProp(path, "ID", "");
    service.Version = document.GetNodeProp(path, "Version", "");
    addon.Services.push_back(std::move(service));
  });
}

/// The first entry with this ID, or the list's end.
template <typename Entry>
typename std::vector<Entry>::iterator FindByID(std::vector<Entry>& entries, const std::string& id) {
  return std::find_if(entries.begin(), entries.end(),
                      [&](const Entry& entry) { return entry.ID == id; });
}

}  // namespace TevModelParse
