#include "workbench/check/Words.h"

#include <algorithm>

#include "workbench/output/Text.h"

std::string Quoted(const std::string& text) {
  return "\"" + Escaped(text) + "\"";
}

std::string Tag(const std::string& element) {
  return "<" + element + ">";
}

std::string QuotedList(const std::vector<std::string>& names, std::size_t most) {
  std::string text;
  const std::size_t shown = std::min(most, names.size());
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i + 1 == names.size();
    if (i > 0) text += last ? " and " : ", ";
    text += Quoted(names[i]);
  }
  if (shown < names.size()) text += " and " + std::to_string(names.size() - shown) + " more";
  return text;
}

std::string Counted(std::size_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

Place PlaceOf(const CheckedFile& file) {
  return {file.readName.empty() ? file.name : file.readName, 0, 0};
}

Place PlaceOf(const CheckedFile& file, const TextPlace& place) {
  return {PlaceOf(file).file, place.line, place.column};
}

Place PlaceOf(const CheckedFile& file, const XmlNode& node) {
  return PlaceOf(file, node.place);
}

Place PlaceOf(const CheckedFile& file, const XmlNode& node, const char* attribute) {
  const XmlAttribute* found = node.Attribute(attribute);
  return PlaceOf(file, found == nullptr ? node.place : found->place);
}

Place PlaceAt(const CheckedFile& file, const char* path) {
  return PlaceAt(file, file.tree.root, path);
}

Place PlaceAt(const CheckedFile& file, const XmlNode& node, const char* path) {
  const std::vector<const XmlNode*> found = Select(node, path);
  return PlaceOf(file, found.empty() ? node : *found.front());
}

Place PlaceOf(const PluginEntry& entry) {
  return PlaceOf(*entry.file, entry.node == nullptr ? *entry.section : *entry.node);
}
