#include "bench/XmlRecorder.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <cstdio>
#include <stdexcept>

extern "C" {

std::FILE* __real_fopen(const char* path, const char* mode);
xmlDoc* __real_xmlReadMemory(const char* bytes, int size, const char* url, const char* encoding,
                             int options);
xmlXPathObject* __real_xmlXPathEvalExpression(const xmlChar* text, xmlXPathContext* context);
xmlChar* __real_xmlNodeListGetString(xmlDoc* document, const xmlNode* list, int inLine);
xmlChar* __real_xmlGetProp(const xmlNode* node, const xmlChar* name);

std::FILE* __wrap_fopen(const char* path, const char* mode);
xmlDoc* __wrap_xmlReadMemory(const char* bytes, int size, const char* url, const char* encoding,
                             int options);
xmlXPathObject* __wrap_xmlXPathEvalExpression(const xmlChar* text, xmlXPathContext* context);
xmlChar* __wrap_xmlNodeListGetString(xmlDoc* document, const xmlNode* list, int inLine);
xmlChar* __wrap_xmlGetProp(const xmlNode* node, const xmlChar* name);

}  // extern "C"

namespace {

using Kind = XmlStep::Kind;

std::vector<XmlStep>* g_steps = nullptr;  // the recorded steps; null: nothing is recorded
std::string g_opened;                     // the file opened last, while steps are recorded

const xmlChar* XmlString(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

const char* Characters(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

[[noreturn]] void Fail(const XmlStep& step) {
  throw std::runtime_error(step.text + " " + step.attribute +
                           ": found when the frame read it, now not");
}

xmlDoc* Parse(const XmlStep& step) {
  std::FILE* file = __real_fopen(step.text.c_str(), "rb");
  if (file == nullptr) Fail(step);
  std::fseek(file, 0, SEEK_END);
  std::string bytes(static_cast<std::size_t>(std::ftell(file)), '\0');
  std::fseek(file, 0, SEEK_SET);
  const std::size_t size = std::fread(&bytes[0], 1, bytes.size(), file);
  std::fclose(file);
  xmlDoc* document = __real_xmlReadMemory(bytes.data(), static_cast<int>(size), nullptr, "UTF-8",
                                          XML_PARSE_NOBLANKS);
  if (document == nullptr) Fail(step);
  return document;
}

void Query(const XmlStep& step, xmlDoc* document, std::deque<std::string>& copies) {
  xmlXPathContext* context = xmlXPathNewContext(document);
  xmlXPathObject* matches = __real_xmlXPathEvalExpression(XmlString(step.text), context);
  xmlXPathFreeContext(context);
  if (step.kind != Kind::kMatch) {
    if (matches == nullptr || matches->nodesetval == nullptr || matches->nodesetval->nodeNr == 0) {
      Fail(step);
    }
    xmlNode* node = matches->nodesetval->nodeTab[0];
    xmlChar* found = step.kind == Kind::kText
                         ? __real_xmlNodeListGetString(document, node->children, 1)
                         : __real_xmlGetProp(node, XmlString(step.attribute));
    copies.emplace_back(found == nullptr ? "" : Characters(found));
    xmlFree(found);
  }
  xmlXPathFreeObject(matches);
}

}  // namespace

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  if (g_steps != nullptr) g_opened = path;
  return __real_fopen(path, mode);
}

xmlDoc* __wrap_xmlReadMemory(const char* bytes, int size, const char* url, const char* encoding,
                             int options) {
  if (g_steps != nullptr) g_steps->push_back({Kind::kParse, g_opened, ""});
  return __real_xmlReadMemory(bytes, size, url, encoding, options);
}

xmlXPathObject* __wrap_xmlXPathEvalExpression(const xmlChar* text, xmlXPathContext* context) {
  if (g_steps != nullptr) g_steps->push_back({Kind::kMatch, Characters(text), ""});
  return __real_xmlXPathEvalExpression(text, context);
}

xmlChar* __wrap_xmlNodeListGetString(xmlDoc* document, const xmlNode* list, int inLine) {
  if (g_steps != nullptr) g_steps->back().kind = Kind::kText;
  return __real_xmlNodeListGetString(document, list, inLine);
}

xmlChar* __wrap_xmlGetProp(const xmlNode* node, const xmlChar* name) {
  if (g_steps != nullptr) {
    g_steps->back().kind = Kind::kAttribute;
    g_steps->back().attribute = Characters(name);
  }
  return __real_xmlGetProp(node, name);
}

XmlRecorder::XmlRecorder(std::vector<XmlStep>& steps) {
  g_steps = &steps;
}

XmlRecorder::~XmlRecorder() {
  g_steps = nullptr;
}

void Replay(const std::vector<XmlStep>& steps, std::deque<std::string>& copies) {
  xmlDoc* document = nullptr;
  for (const XmlStep& step : steps) {
    if (step.kind == Kind::kParse) {
      xmlFreeDoc(document);
      document = nullptr;
      document = Parse(step);
    } else {
      Query(step, document, copies);
    }
  }
  xmlFreeDoc(document);
}
