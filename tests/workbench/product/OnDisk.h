#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ProductTree.h"
#include "workbench/product/Findings.h"
#include "workbench/product/ModelFiles.h"

/// A test with a product tree on disk. Paths in sentences are shown relative to the product's
/// folder and with forward slashes.
class ProductOnDisk : public testing::Test {
 protected:
  ProductOnDisk() { tree.Product("a: b:a sub"); }

  std::filesystem::path Bin() const { return tree.ExeDirectory(); }

  std::string Shown(std::string text) const {
    std::replace(text.begin(), text.end(), '\\', '/');
    const std::string root =
        std::filesystem::path(tree.ExeDirectory()).parent_path().parent_path().generic_string() +
        "/";
    for (std::size_t at = text.find(root); at != std::string::npos; at = text.find(root)) {
      text.erase(at, root.size());
    }
    return text;
  }

  std::vector<ModelFile> Files() const { return ReadModelFiles(Bin(), names); }

  std::vector<std::string> Unreadable() const {
    std::vector<std::string> shown;
    for (const std::string& sentence : UnreadableProductSentences(Files(), names)) {
      shown.push_back(Shown(sentence));
    }
    return shown;
  }

  /// Findings as "E text", "W text", "N text".
  std::vector<std::string> ShownFindings(const std::vector<Finding>& findings) const {
    std::vector<std::string> shown;
    for (const Finding& finding : findings) {
      constexpr char letters[] = "NWE";
      const char letter = letters[static_cast<int>(finding.severity)];
      shown.push_back(std::string(1, letter) + " " + Shown(finding.text));
    }
    return shown;
  }

  std::vector<std::string> FileFindings() const {
    return ShownFindings(FindingsOfFiles(Files(), names));
  }

  const LocalNames names = {[](const std::string& local) { return std::filesystem::path(local); },
                            [](const std::filesystem::path& path) { return path.string(); }};
  ProductTree tree;
};
