#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// What the frame reads from each kind of model file: elements, attributes, and what an absent one
// reads as. Names that are not listed here are not read.

enum class FileKind;

/// How the frame reads a value.
enum class ValueKind {
  kNone,     // no value of its own: an element that has attributes or contains elements
  kText,     // handed on as it stands
  kId,       // a name that others refer to or that becomes part of a path; compared to the letter
  kVersion,  // compared byte by byte, where it is compared at all
  kNumber,   // the digits at its beginning, after blanks and one sign; a word is 0
  kFlag,     // such a number: 1 is yes, everything else no
  kTrue      // "true" is yes, everything else no
};

/// What becomes of several elements of one name in one parent.
enum class ElementRole {
  kSingle,   // the first counts
  kSection,  // contains the entries of a list; a second one hides entries
  kEntry     // each counts
};

/// A part of a static table.
template <typename T>
struct TablePart {
  const T* first = nullptr;
  std::size_t count = 0;

  const T* begin() const { return first; }
  const T* end() const { return first + count; }
};

struct AttributeSpec {
  const char* name;
  ValueKind value;
  const char* absent = "";  // what an absent one reads as; an empty text is read as it is, but an
                            // empty number as this
  bool required = false;    // without it, something that was meant does not work
};

struct ElementSpec {
  const char* name;
  ElementRole role = ElementRole::kSingle;
  ValueKind value = ValueKind::kNone;
  const char* absent = "";  // what an absent one, an empty one and a blank one read as
  bool required = false;
  TablePart<AttributeSpec> attributes = {};
  TablePart<ElementSpec> children = {};  // those of a MenuItem of a portal lead to itself

  /// The attribute or child element of that name; null for none.
  const AttributeSpec* Attribute(std::string_view attribute) const;
  const ElementSpec* Child(std::string_view element) const;

  std::vector<std::string> AttributeNames() const;
  std::vector<std::string> ChildNames() const;
};

/// The root element of a file of this kind.
const ElementSpec& Grammar(FileKind kind);

/// The element at `path` below the root: "Plugins/Plugin"; the root for an empty path, null when
/// the frame reads no such element.
const ElementSpec* SpecAt(FileKind kind, std::string_view path);

/// The names of all elements below the root, each once, sorted.
std::vector<std::string> ElementNames(FileKind kind);

/// The names of all attributes in the file, each once, sorted.
std::vector<std::string> AttributeNames(FileKind kind);

/// Where an element of this name may stand: its paths below the root, in the order of the table.
/// Of an element that may stand in itself, the first level only.
std::vector<std::string> PathsOf(FileKind kind, std::string_view element);

/// All paths below the root, parents before their children; an element that may stand in itself
/// is followed one level deep.
std::vector<std::string> AllPaths(FileKind kind);
