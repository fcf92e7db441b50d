#include "fuzz/LibraryTarget.h"

#include "fuzz/FuzzTarget.h"
#include "workbench/product/LibraryHeader.h"

void FuzzLibrary(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  const LibraryHeader header = ReadLibraryHeader(folder.Write("library", input));
  std::size_t bytes = 0;
  for (const ExportedSymbol& symbol : header.exported) bytes += symbol.name.size();
  for (const UndefinedSymbol& symbol : header.undefined) bytes += symbol.name.size();
  for (const ImportedSymbol& symbol : header.imported) {
    Check(symbol.library < header.needed.size(), "an import is from a library that is needed");
    bytes += symbol.name.size();
  }
  for (const std::string& name : header.needed) bytes += name.size();
  // A name that is read twice counts in both lists.
  Check(bytes <= 2 * input.size(), "the names are not longer than the file");
  Check(header.size == input.size(), "the size is the file's");
}
