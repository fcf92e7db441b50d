#include "workbench/product/XmlTags.h"

#include <algorithm>
#include <utility>

namespace {

/// Turns offsets of a text into places; the offsets must ascend.
class PlaceCounter {
 public:
  explicit PlaceCounter(std::string_view text) : m_text(text) {}

  TextPlace At(std::size_t offset) {
    const std::size_t end = std::min(offset, m_text.size());
    if (m_at < end) {
      m_place = PlaceBehind(m_place, m_text.substr(m_at, end - m_at));
      m_at = end;
    }
    return m_place;
  }

 private:
  std::string_view m_text;
  std::size_t m_at = 0;
  TextPlace m_place = {1, 1};
};

class TagReader {
 public:
  explicit TagReader(const std::string& text)
      : m_text(text), m_at(BeginsWithMark(text) ? 3 : 0), m_places(text) {}

  XmlTags Read() {
    while (ReadTextRun()) ReadMarkup();
    return std::move(m_tags);
  }

 private:
  static bool BeginsWithMark(const std::string& text) {
    return text.compare(0, 3, "\xEF\xBB\xBF") == 0;
  }

  /// Moves to the next "<"; false when there is none.
  bool ReadTextRun() {
    const std::size_t visible = m_text.find_first_not_of(" \t\r\n", m_at);
    if (visible == std::string::npos) return false;
    NoteText(visible);
    m_at = m_text.find('<', m_at);
    return m_at != std::string::npos;
  }

  void NoteText(std::size_t visible) {
    const bool isText = m_text[visible] != '<' || StartsWith(visible, "<![CDATA[");
    if (!isText || m_open.empty()) return;
    XmlTag& tag = m_tags.elements[m_open.back()];
    if (tag.textPlace.line == 0) tag.textPlace = m_places.At(visible);
  }

  void ReadMarkup() {
    if (Skip("<!--", "-->") || Skip("<![CDATA[", "]]>") || Skip("<?", "?>")) return;
    if (StartsWith(m_at, "<!DOCTYPE")) return SkipDoctype();
    if (!StartsWith(m_at, "</")) return ReadTag();
    m_tags.elements[m_open.back()].endTag = m_at;
    m_open.pop_back();
    SkipTo(">");
  }

  bool StartsWith(std::size_t at, std::string_view begin) const {
    return m_text.compare(at, begin.size(), begin) == 0;
  }

  void SkipTo(std::string_view end) {
    const std::size_t found = m_text.find(end, m_at);
    m_at = found == std::string::npos ? m_text.size() : found + end.size();
  }

  bool Skip(std::string_view begin, std::string_view end) {
    if (!StartsWith(m_at, begin)) return false;
    m_at += begin.size();
    SkipTo(end);
    return true;
  }

  /// An internal subset may contain ">" in quotes, in comments and behind its declarations.
  void SkipDoctype() {
    m_tags.doctypePlace = m_places.At(m_at);
    m_at += std::string_view("<!DOCTYPE").size();
    bool inSubset = false;
    while (m_at < m_text.size()) {
      if (Skip("<!--", "-->") || Skip("<?", "?>")) continue;
      const char c = m_text[m_at++];
      if (c == '"' || c == '\'') SkipTo(std::string_view(&c, 1));
      if (c == '[') inSubset = true;
      if (c == ']') inSubset = false;
      if (c == '>' && !inSubset) return;
    }
  }

  void ReadTag() {
    XmlTag tag;
    tag.place = m_places.At(m_at);
    tag.begin = m_at;
    m_at = m_text.find_first_of(" \t\r\n/>", m_at);
    while ((m_at = m_text.find_first_not_of(" \t\r\n", m_at)) != std::string::npos) {
      if (m_text[m_at] == '>' || m_text[m_at] == '/') break;
      const std::size_t end = m_text.find_first_of(" \t\r\n=", m_at);
      tag.attributes.push_back(m_places.At(m_at));
      tag.names.push_back(std::string_view(m_text).substr(m_at, end - m_at));
      m_at = m_text.find_first_of("\"'", end);
      const char quote = m_text[m_at++];
      SkipTo(std::string_view(&quote, 1));
    }
    if (m_text[m_at] != '/') m_open.push_back(m_tags.elements.size());
    SkipTo(">");
    tag.end = m_at;
    m_tags.elements.push_back(std::move(tag));
  }

  const std::string& m_text;
  std::size_t m_at;
  PlaceCounter m_places;
  XmlTags m_tags;
  std::vector<std::size_t> m_open;  // indices of the elements that are not closed yet
};

}  // namespace

XmlTags ReadXmlTags(const std::string& text) {
  return TagReader(text).Read();
}

TextPlace PlaceBehind(TextPlace place, std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == '\n') {
      ++place.line;
      place.column = 1;
    } else if ((byte & 0xC0U) != 0x80U) {
      ++place.column;
    }
  }
  return place;
}
