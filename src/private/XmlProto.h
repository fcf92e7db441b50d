#pragma once

#include <cstdint>
#include <memory>
#include <string>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): libxml2's own name
struct _xmlDoc;

namespace TevModelParse {

/// One parsed XML document and its XPath queries. Of the frame's files only its source includes
/// libxml2.
///
/// A reader makes one per file under shared ownership and drops it when it is done with the file.
/// Before the first parse, and after a failed one, the document is empty and every query finds
/// nothing. One object belongs to one thread at a time. A query does not fail: it returns the
/// fallback for what is not there. It does so too for a text or attribute that is too long, or of
/// too many pieces, and reports that where libxml2's messages go, with file name and line.
class CXmlProto {
 public:
  CXmlProto();
  virtual ~CXmlProto();
  CXmlProto(const CXmlProto&) = delete;
  CXmlProto& operator=(const CXmlProto&) = delete;

  /// Parses `text`, the content of the file `name`, in place of the document. False when it is not
  /// well-formed: the document is then empty, and what is wrong, with file name and line, goes
  /// where libxml2's messages go.
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
  struct FreeDocument {
    void operator()(_xmlDoc* document) const;
  };

  std::unique_ptr<_xmlDoc, FreeDocument> m_document;  // never null between calls
  std::string m_name;                                 // of the file; may be empty
};

/// Reads the file at `path`, byte for byte, without its trailing line feeds.
///
/// A file that is missing, empty or unreadable is replaced by the one at `alternative`, or, when
/// that is empty, by the file beside it with the same stem and the extension ".data". Returns
/// false, with `content` untouched, when that cannot be read either. Any thread.
bool ReadWholeFile(std::string& content, const std::string& path, const std::string& alternative);

/// The directory of the running executable, with forward slashes and a trailing one; empty when it
/// is not known. Asked of the runtime until it is known, then remembered. Any thread.
std::string GetExeDirectory();

/// Reads and parses one model file, or the file beside it that stands in for it, as ReadWholeFile
/// does. Null when it cannot be read; empty when it is not well-formed.
std::shared_ptr<CXmlProto> ReadDocument(const std::string& path);

}  // namespace TevModelParse
