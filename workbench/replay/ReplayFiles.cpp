#include "workbench/replay/ReplayFiles.h"

#include <cstddef>

#include "workbench/output/Text.h"

namespace {

constexpr char kXmlHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::size_t kColumns = 80;

/// `text` as an attribute's value or an element's content. What XML cannot express is escaped as
/// for a terminal, or becomes a question mark.
std::string Xml(const std::string& text) {
  std::string xml;
  for (const char c : Escaped(text)) {
    switch (c) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      default:
        xml += c;
    }
  }
  for (const char* noCharacter : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {  // U+FFFE, U+FFFF
    for (std::size_t at = 0; (at = xml.find(noCharacter, at)) != std::string::npos;) {
      xml.replace(at, 3, "?");
    }
  }
  return xml;
}

std::string WrittenID(const ReplayPlugin& plugin) {
  return plugin.hasID ? plugin.id : std::string();
}

std::string Entry(const char* element, const ReplayPlugin& plugin) {
  return std::string("    <") + element + " ID=\"" + Xml(WrittenID(plugin)) + "\" Version=\"" +
         Xml(plugin.version) + "\"/>\n";
}

std::string ProductXml(const Replay& replay) {
  std::string plugins;
  std::string subPlatforms;
  for (const ReplayPlugin& plugin : replay.plugins) {
    if (plugin.isPlatform) {
      subPlatforms += Entry("SubPlatform", plugin);
    } else {
      plugins += Entry("Plugin", plugin);
    }
  }
  return kXmlHead + ("<ProductDescription>\n  <Product>" + Xml(replay.product)) +
         "</Product>\n  <Version>" + Xml(replay.version) +
         "</Version>\n  <EditionConfig>Replay</EditionConfig>\n  <Plugins>\n" + plugins +
         "  </Plugins>\n  <SubPlatforms>\n" + subPlatforms +
         "  </SubPlatforms>\n</ProductDescription>\n";
}

std::string PluginXml(const Replay& replay, const ReplayPlugin& plugin) {
  std::string xml = kXmlHead + ("<Plugin>\n  <Type>2</Type>\n  <ID>" + Xml(plugin.id)) +
                    "</ID>\n  <Name>" + Xml(plugin.id) + "</Name>\n  <Version>" +
                    Xml(plugin.version) +
                    "</Version>\n  <IsDistributed>1</IsDistributed>\n  <DependencyList>\n";
  for (const std::size_t other : plugin.dependsOn) xml += Entry("Plugin", replay.plugins[other]);
  return xml + "  </DependencyList>\n</Plugin>\n";
}

std::string Library(const ReplayPlugin& plugin) {
  return "bin/" + plugin.id + ".dll";
}

std::string Sentences(const std::vector<std::string>& sentences) {
  std::string text;
  for (const std::string& sentence : sentences) {
    text += "\n";
    for (const std::string& line : Wrapped("- " + sentence, kColumns, 2)) text += line + "\n";
  }
  return text;
}

std::string Paragraph(const std::string& sentences) {
  std::string text;
  for (const std::string& line : Wrapped(sentences, kColumns, 0)) text += line + "\n";
  return text + "\n";
}

}  // namespace

std::vector<ReplayFile> ReplayFiles(const Replay& replay, const std::string& description) {
  std::vector<ReplayFile> files = {
      {"REPLAY.txt", description},
      {"Product.xml", ProductXml(replay)},
      {"ProductAddons.xml", std::string(kXmlHead) + "<AddonList/>\n"},
      {"ProductTools.xml", std::string(kXmlHead) + "<ToolList/>\n"},
      {"bin/TevAddons/InstalledProducts.xml",
       std::string(kXmlHead) + "<InstalledProductsDescription/>\n"},
      {"bin/META_INFO/DeviceDrivers.xml", std::string(kXmlHead) + "<DAMDrivers/>\n"},
      {"bin/META_INFO/Portal.xml", std::string(kXmlHead) + "<PortalDescription/>\n"},
      {"bin/META_INFO/Platform.xml", std::string(kXmlHead) + "<Platform/>\n"},
      BehaviorFile(replay)};
  for (const ReplayPlugin& plugin : replay.plugins) {
    if (!plugin.hasID) continue;
    if (!plugin.isPlatform) {
      files.push_back(
          {"bin/META_INFO/" + plugin.id + "/" + plugin.id + ".xml", PluginXml(replay, plugin)});
    }
    if (plugin.library == ReplayPlugin::Library::kUnusable) {
      files.push_back({Library(plugin), "In the recorded run this library could not be loaded.\n"});
    }
  }
  return files;
}

ReplayFile BehaviorFile(const Replay& replay) {
  std::string text =
      "# What each stub does: its name; how many microseconds its Init takes, and how it ends;\n"
      "# the same of its UnInit. How: succeeds, fails, throws, hangs, aborts, segfaults, exits.\n";
  if (replay.busy) text += "busy\n";
  for (const ReplayPlugin& plugin : replay.plugins) {
    const bool isStub = plugin.hasID && plugin.library == ReplayPlugin::Library::kStub;
    if (isStub) text += BehaviorLine(plugin.id, plugin.behavior);
  }
  return {"bin/TevStubPlugin.txt", text};
}

std::vector<std::string> StubLibraries(const Replay& replay) {
  std::vector<std::string> paths;
  for (const ReplayPlugin& plugin : replay.plugins) {
    const bool isStub = plugin.hasID && plugin.library == ReplayPlugin::Library::kStub;
    if (isStub) paths.push_back(Library(plugin));
  }
  return paths;
}

std::string ReplayDescription(const Replay& replay, const Timeline& timeline,
                              const ReplayOptions& options, const std::string& arguments) {
  const RunHead& head = timeline.run.record.head;
  std::string of = "a recorded run";
  if (!options.anonymous && !head.product.empty()) {
    of += " of " + Escaped(head.product) + " " + Escaped(head.productVersion);
  }
  if (!options.anonymous && !head.time.empty()) of += " at " + Escaped(head.time);
  return Paragraph(
             "HUB replay wrote this product from " + of +
             ". Every plugin is a copy of one stub library: it waits as long as the recorded "
             "plugin worked, and ends in the same way. It contains no code of that product.") +
         "    HUB run --bin bin" + arguments + "\n\n" +
         Paragraph(
             "from this folder runs it. The stubs are for the system on which this was "
             "written; bin/TevStubPlugin.txt says what each of them does, and may be edited.") +
         "What differs from the recorded run:\n" + Sentences(replay.differences) +
         Sentences(
             {replay.busy ? "Stubs use the processor all the time that they take."
                          : "Stubs wait and do no work, so the processor is idle.",
              "Texts that plugins logged or threw are not in it: of a failure only its kind is "
              "the same. A failure for a missing Init or UnInit is one that returns false.",
              "The time in which a library was loaded or unmapped, when it is a millisecond "
              "or more, is part of the stub's Init or UnInit.",
              "A stub does not notice that a plugin which it depends on has failed: it does "
              "what it did in the recorded run."});
}
