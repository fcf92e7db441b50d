// The sentences on model files that cannot be read or that read as empty.

#include <algorithm>
#include <optional>

#include "workbench/product/Findings.h"
#include "workbench/product/ModelText.h"
#include "workbench/product/OtherCase.h"
#include "workbench/product/XmlFile.h"

namespace fs = std::filesystem;

namespace {

using State = ModelFile::State;

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string Place(const fs::path& file, int line, const LocalNames& names) {
  const std::string name = names.fromPath(file);
  return line > 0 ? name + ":" + std::to_string(line) : name;
}

/// `Product.xml:7 lists "a.server"`; empty for a file that no other file lists.
std::string ListingClause(const ModelFileEntry& listed, const LocalNames& names) {
  if (listed.element.empty()) return std::string();
  return Place(listed.file.filename(), listed.line, names) + " lists " + Quoted(listed.id);
}

bool CannotBeRead(const ModelFile& file) {
  return file.state == State::kMissing || file.state == State::kUnreadable;
}

/// Why a file cannot be read, which file lists it, and which file with other letter case exists.
std::string WhyUnreadable(const ModelFile& file, const LocalNames& names) {
  if (!file.listed.element.empty() && file.listed.id.empty()) {
    return EntryWithoutID(file.listed, names);
  }
  std::string text = names.fromPath(file.path) + " " + file.detail;
  const std::string listing = ListingClause(file.listed, names);
  if (!listing.empty()) text += "; " + listing;
  if (const auto other = FileWithOtherCase(file.path)) {
    const bool sameFolder = other->parent_path() == file.path.parent_path();
    text += "; there is " + names.fromPath(sameFolder ? other->filename() : *other) +
            ", with other letter case";
  }
  return text;
}

/// What the product loses when the file reads as empty.
std::string Consequence(const ModelFile& file, const LocalNames& names) {
  const std::string& root = file.root;
  const std::string id = Quoted(file.listed.id);
  if (root == "ProductDescription") return "no plugin is started";
  if (root == "DAMDrivers") return "there are no drivers";
  if (root == "PortalDescription") return "there are no menus";
  if (root == "Platform") return "the platform has no settings";
  if (root == "AddonList") return "no addon is offered";
  if (root == "ToolList") return "no tool is offered";
  if (root == "InstalledProductsDescription") return "nothing counts as installed";
  if (root == "AddonDescription") return "the addon " + id + " is not installed";
  if (root == "ToolDescription") return "the tool " + id + " is not installed";
  return "the " + std::string(file.listed.element == "Driver" ? "driver" : "plugin") + " that " +
         Place(file.listed.file.filename(), file.listed.line, names) + " lists as " + id +
         " is dropped";
}

bool IsOfTools(const ModelFile& file) {
  return file.root == "ToolList" || file.root == "ToolDescription";
}

std::string EmptyFileText(const ModelFile& file, const LocalNames& names) {
  std::string text = Place(file.read, file.line, names) + ": ";
  text +=
      file.state == State::kNotWellFormed ? "not well-formed (" + file.detail + ")" : file.detail;
  text += ": the whole file reads as empty, so " + Consequence(file, names);
  if (!file.passedOver.empty()) {
    text +=
        "; it stands in for " + names.fromPath(file.path.filename()) + ", which " + file.passedOver;
  }
  return text;
}

/// The finding for a plugin whose description contains another ID than the list that names it. The
/// frame uses the description's ID. Of several plugins with the same ID it starts only one, which
/// is how an addon replaces a plugin of the product.
std::optional<Finding> WrongHeldID(const ModelFile& file, const std::vector<ModelFile>& files,
                                   const LocalNames& names) {
  const bool isPlugin = file.root == "Plugin" && file.state == State::kGood;
  if (!isPlugin || file.heldID == file.listed.id) return std::nullopt;
  const std::string place = Place(file.read, file.line, names) + ": its ID is ";
  const std::string entry = ", not " + Quoted(file.listed.id) + ", by which " +
                            Place(file.listed.file.filename(), file.listed.line, names) +
                            " lists it: ";
  if (file.heldID.empty()) {
    return Finding{Severity::kError, place + "missing: " + Consequence(file, names)};
  }
  if (!file.required) return std::nullopt;
  const bool isTaken = std::any_of(files.begin(), files.end(), [&](const ModelFile& other) {
    return &other != &file && other.required && other.heldID == file.heldID;
  });
  if (isTaken) {
    return Finding{Severity::kError, place + Quoted(file.heldID) + entry +
                                         "another plugin has that ID, and only one of them counts"};
  }
  return Finding{Severity::kWarning,
                 place + Quoted(file.heldID) + entry + "the plugin counts as that one"};
}

/// The sentence on a file that is not required and cannot be read: which addons or tools are lost.
std::string UnreadableAddonText(const ModelFile& file, const LocalNames& names) {
  const std::string why = WhyUnreadable(file, names) + "; ";
  if (file.root == "AddonList") return why + "no addon is read, not even an installed one";
  if (file.root == "ToolList") return why + "no tool is read, not even an installed one";
  if (file.root == "Plugin") {
    return why + "the addon in " + names.fromPath(file.listed.file) + " is not installed";
  }
  const bool nameless = !file.listed.element.empty() && file.listed.id.empty();
  return why + (nameless ? "it is skipped" : Consequence(file, names));
}

const ModelFile* Find(const std::vector<ModelFile>& files, const std::string& root) {
  const auto found = std::find_if(files.begin(), files.end(),
                                  [&](const ModelFile& file) { return file.root == root; });
  return found == files.end() ? nullptr : &*found;
}

/// The sentence on installed addons or tools that are not read, because their catalogue or the
/// product's version is missing. `list`: their elements in InstalledProducts.xml.
std::string InstalledButNotRead(const std::vector<ModelFile>& files,
                                const std::string& catalogueRoot, const std::string& list,
                                const std::string& what, const LocalNames& names) {
  const ModelFile* installed = Find(files, "InstalledProductsDescription");
  const ModelFile* catalogue = Find(files, catalogueRoot);
  if (installed == nullptr || installed->state != State::kGood) return std::string();
  if (catalogue != nullptr && catalogue->state != State::kMissing) return std::string();
  const int count = XmlFile(ReadTextAgain(installed->read)).Count(list);
  if (count == 0) return std::string();
  const ModelFile& product = files.front();
  if (catalogue == nullptr && product.state != State::kGood) return std::string();  // reported
  const std::string why = catalogue == nullptr
                              ? names.fromPath(product.read) + ": its Version has no three parts"
                              : WhyUnreadable(*catalogue, names);
  return why + "; no " + what + " is read, not even the " +
         (count == 1 ? "one" : std::to_string(count)) + " that " + names.fromPath(installed->read) +
         " lists";
}

}  // namespace

std::string EntryWithoutID(const ModelFileEntry& listed, const LocalNames& names) {
  const std::string place = Place(listed.file, listed.line, names);
  if (listed.hidden) {
    return place + ": a second section with <" + listed.element +
           ">: the frame reads only one such section right; put all entries into the first";
  }
  const bool vowel = listed.element.find_first_of("AEIOU") == 0;
  return place + ": " + (vowel ? "an" : "a") + " <" + listed.element + "> without an ID";
}

std::vector<std::string> UnreadableProductSentences(const std::vector<ModelFile>& files,
                                                    const LocalNames& names) {
  std::vector<std::string> sentences;
  for (const ModelFile& file : files) {
    if (!file.required || !CannotBeRead(file)) continue;
    std::string sentence = WhyUnreadable(file, names) + "; the product cannot be read";
    // All entries hidden by a second section have the same sentence.
    if (std::count(sentences.begin(), sentences.end(), sentence) > 0) continue;
    sentences.push_back(std::move(sentence));
  }
  return sentences;
}

std::vector<Finding> FindingsOfFiles(const std::vector<ModelFile>& files, const LocalNames& names) {
  std::vector<Finding> findings;
  const auto add = [&](Severity severity, std::string text) {
    const auto same = [&](const Finding& finding) { return finding.text == text; };
    if (text.empty() || std::any_of(findings.begin(), findings.end(), same)) return;
    findings.push_back({severity, std::move(text)});
  };
  for (const ModelFile& file : files) {
    if (const auto wrong = WrongHeldID(file, files, names)) add(wrong->severity, wrong->text);
    const bool ofTools = IsOfTools(file);
    const Severity severity = ofTools ? Severity::kWarning : Severity::kError;
    if (file.state == State::kNotWellFormed || file.state == State::kOtherRoot) {
      add(Severity::kError, EmptyFileText(file, names));
    } else if (file.state == State::kOtherID) {
      add(severity, Place(file.read, file.line, names) + ": " + file.detail + ": " +
                        Consequence(file, names));
    } else if (CannotBeRead(file) && !file.required) {
      // A product without addons and tools needs no catalogues.
      const bool tolerated = file.state == State::kMissing && file.listed.element.empty();
      if (!tolerated) add(severity, UnreadableAddonText(file, names));
    }
  }
  add(Severity::kError,
      InstalledButNotRead(files, "AddonList", "/InstalledProductsDescription/Addons/Addon", "addon",
                          names));
  add(Severity::kWarning,
      InstalledButNotRead(files, "ToolList", "/InstalledProductsDescription/Tools/Tool", "tool",
                          names));
  return findings;
}
