#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace TevModelParse {

/// One parsed XML document, asked by XPath: the only code that knows libxml2.
///
/// A reader makes one per file under shared ownership and drops it when it is done with the file.
/// It always holds a document: before the first parse, and after a failed one, an empty one, so
/// that every query finds nothing. One object belongs to one thread at a time. Queries never fail:
/// what is not there reads as the default. So does a text or attribute beyond CXmlProto's bounds;
/// that is reported where libxml2's messages go, with the name of the file and the line.
class CXmlProto {
 public:
  CXmlProto();
  virtual ~CXmlProto();
  CXmlProto(const CXmlProto&) = delete;
  CXmlProto& operator=(const CXmlProto&) = delete;

  /// Replaces the document by the one that `text` holds. False when it is not well-formed; what is
  /// wrong goes, with the name of the file and the line, to libxml2's generic error function.
  bool ParseMemory(const std::string& text, const std::string& name = "");

  /// How many nodes match the absolute path `expression`.
  std::int32_t GetNodeCount(const std::string& expression) const;

  /// The text directly inside the first match, untrimmed; `fallback` when there is no match, or no
  /// text but white space.
  std::string GetNodeText(const std::string& expression, const std::string& fallback) const;

  /// That text as the leading decimal integer (0 when there is none); `fallback` without a text.
  std::int32_t GetNodeInt(const std::string& expression, std::int32_t fallback) const;

  /// An attribute of the first match, even when empty; `fallback` when there is no such attribute.
  std::string GetNodeProp(const std::string& expression, const std::string& attribute,
                          const std::string& fallback) const;

 private:
  struct Document;  // libxml2's, with the name of its file

  const std::unique_ptr<Document> m_document;
};

/// Reads the file at `path`, byte for byte, without its trailing line feeds.
///
/// A file that is missing, empty or unreadable is replaced by the one at `alternative`, or, when
/// that is empty, by the file beside it with the same stem and the extension ".data". Returns
/// false, with `content` untouched, when that cannot be read either. Any thread.
bool ReadWholeFile(std::string& content, const std::string& path, const std::string& alternative);

/// The directory of the running executable, with forward slashes and a trailing one; empty when it
/// is not known. Found out once and remembered. Any thread.
std::string GetExeDirectory();

/// Reads and parses one model file. Null when it cannot be read; what is not well-formed reads as a
/// document that holds nothing.
std::shared_ptr<CXmlProto> ReadDocument(const std::string& path);

}  // namespace TevModelParse
