#include "tests/contract/Subject.h"

#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace {

/// Libraries that are real, and so are the files that they load.
class Libraries : public Subject {
 public:
  std::string PathOf(const std::string& name) override { return m_folder / (name + ".dll"); }

  std::string AddLibrary(const std::string& name) override {
    std::filesystem::copy_file(TEV_CONTRACT_PLUGIN, PathOf(name));
    return PathOf(name);
  }

  std::string AddText(const std::string& name) override {
    return m_folder.Write(name + ".dll", "this is text, long enough to be looked into");
  }

 private:
  const TemporaryFolder m_folder;
};

}  // namespace

std::unique_ptr<Subject> Subject::Make() {
  return std::make_unique<Libraries>();
}
