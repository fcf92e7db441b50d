// Lets each allocation of the initialisation fail in turn, and all allocations of libxml2.
//
// libxml2's allocations do not fail one by one: when some of them fail, 2.9.14 frees memory twice
// or dereferences null pointers.

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "host/RecordJson.h"
#include "src/PluginFrame/PluginManager.h"
#include "src/private/XmlProto.h"
#include "tests/faults/FailingMemory.h"
#include "tests/faults/SmallProduct.h"
#include "tests/load/LibraryDoubles.h"

namespace {

bool g_libxmlHasMemory = true;
long g_libxmlCount = 0;
long g_libxmlFailing = 0;  // the allocation that fails; 0: none

void* AllocateForLibxml(std::size_t size) {
  return g_libxmlHasMemory && ++g_libxmlCount != g_libxmlFailing ? std::malloc(size) : nullptr;
}

void* ReallocateForLibxml(void* memory, std::size_t size) {
  return g_libxmlHasMemory ? std::realloc(memory, size) : nullptr;
}

char* DuplicateForLibxml(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = AllocateForLibxml(size);
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

void Silence(void*, const char*, ...) {}

enum class Outcome { kUp, kRefused, kOutOfMemory };

class Allocations : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    xmlMemSetup(&std::free, &AllocateForLibxml, &ReallocateForLibxml, &DuplicateForLibxml);
    xmlInitParser();
    xmlSetGenericErrorFunc(nullptr, &Silence);
  }

  Allocations() {
    WriteSmallProduct(tree);
    doubles.exePath = tree.ExePath();
  }

  /// Initialises and destroys a manager while allocation number `failing` fails.
  Outcome InitWith(long failing) {
    doubles.productModel = ProductModel();
    doubles.addons.clear();
    doubles.tools.clear();
    xmlResetLastError();
    Memory().count = 0;
    Memory().live = 0;
    Memory().failing = failing;
    Memory().armed = true;
    const Outcome outcome = Init();
    xmlResetLastError();
    Memory().armed = false;
    return outcome;
  }

  static Outcome Init() {
    try {
      return PluginFrame::CPluginManager().Init() ? Outcome::kUp : Outcome::kRefused;
    } catch (const std::bad_alloc&) {
      return Outcome::kOutOfMemory;
    }
  }

  Json HandedOver() const {
    return {
        {"product", doubles.productModel}, {"addons", doubles.addons}, {"tools", doubles.tools}};
  }

  /// Frees what the frame handed over; armed, since it was allocated while armed.
  void Forget() {
    Memory().armed = true;
    doubles.productModel = ProductModel();
    doubles.addons = {};
    doubles.tools = {};
    Memory().armed = false;
  }

  ProductTree tree;
  LibraryDoubles doubles{1};
};

TEST_F(Allocations, EachFailingInTurnIsAFailureThatLosesNothing) {
  ASSERT_EQ(Outcome::kUp, InitWith(0));  // allocates what is kept until the process ends
  Forget();
  ASSERT_EQ(Outcome::kUp, InitWith(0));
  const long allocations = Memory().count;
  const Json whole = HandedOver();
  Forget();
  ASSERT_EQ(0, Memory().live);
  EXPECT_GT(allocations, 300);

  long tolerated = 0;
  for (long failing = 1; failing <= allocations; ++failing) {
    const Outcome outcome = InitWith(failing);
    if (outcome == Outcome::kUp) {
      ++tolerated;
      EXPECT_EQ(whole, HandedOver()) << "allocation " << failing << " lost something silently";
    }
    Forget();
    EXPECT_EQ(0, Memory().live) << "leak after allocation " << failing;
    if (HasFailure()) break;
  }
  RecordProperty("allocations", static_cast<int>(allocations));
  RecordProperty("tolerated", static_cast<int>(tolerated));
}

TEST_F(Allocations, ParserWithoutMemoryIsNotTakenForABrokenDocument) {
  g_libxmlCount = 0;
  TevModelParse::CXmlProto document;
  const long emptyDocument = g_libxmlCount;
  g_libxmlCount = 0;
  g_libxmlFailing = emptyDocument + 1;  // the parser's first allocation
  EXPECT_THROW(document.ParseMemory("<r/>"), std::bad_alloc);
  g_libxmlFailing = 0;
  EXPECT_EQ(0, document.GetNodeCount("/r"));
  EXPECT_TRUE(document.ParseMemory("<r/>"));
}

TEST_F(Allocations, LibxmlWithoutMemoryIsAFailureAndNoEmptyDocument) {
  TevModelParse::CXmlProto document;
  ASSERT_TRUE(document.ParseMemory("<r a='1'>x</r>"));
  g_libxmlHasMemory = false;
  EXPECT_THROW(document.GetNodeCount("/r"), std::bad_alloc);
  EXPECT_THROW(document.GetNodeText("/r", ""), std::bad_alloc);
  EXPECT_THROW(document.GetNodeProp("/r", "a", ""), std::bad_alloc);
  EXPECT_THROW(document.ParseMemory("<r/>"), std::bad_alloc);
  EXPECT_THROW(TevModelParse::CXmlProto(), std::bad_alloc);
  EXPECT_EQ(Outcome::kOutOfMemory, InitWith(0));
  g_libxmlHasMemory = true;
  EXPECT_EQ(Outcome::kUp, InitWith(0));
}

}  // namespace
