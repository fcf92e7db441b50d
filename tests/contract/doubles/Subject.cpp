#include "tests/contract/Subject.h"

#include <atomic>
#include <memory>

#include "tests/support/Seam.h"

namespace {

class Doubles : public Subject {
 public:
  Doubles() {
    m_seam.keepsTasks = false;
    m_seam.exePath = "/p/bin/contract";
  }

  std::string PathOf(const std::string& name) override { return "/p/" + name + ".dll"; }

  std::string AddLibrary(const std::string& name) override {
    const auto isInitialised = std::make_shared<std::atomic<bool>>(false);
    ScriptedLibrary& library = m_seam.libraries[name];
    library.onLoad = [isInitialised] { *isInitialised = false; };
    library.init = [isInitialised] { return !isInitialised->exchange(true); };
    return PathOf(name);
  }

  std::string AddText(const std::string& name) override {
    m_seam.libraries[name].loads = false;
    m_seam.loadError = 193;
    return PathOf(name);
  }

 private:
  Seam m_seam;
};

}  // namespace

std::unique_ptr<Subject> Subject::Make() {
  return std::make_unique<Doubles>();
}
