#include "workbench/product/XmlThreads.h"

#include <libxml/parser.h>

void PrepareXmlForThreads() {
  xmlInitParser();
}
