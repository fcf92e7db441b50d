#pragma once

#include <memory>
#include <string>

/// The libraries under test, with what the suite needs of them that the SDK has no call for: the
/// doubles of the unit tests, the reference libraries, or a site's own.
///
/// Each test has one of its own. Used on the test's thread.
class Subject {
 public:
  static std::unique_ptr<Subject> Make();

  Subject() = default;
  virtual ~Subject() = default;
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  /// The path at which the loader finds something named `name` if it is added, in the local code
  /// page.
  virtual std::string PathOf(const std::string& name) = 0;

  /// Adds the plugin library of fixtures/contract_plugin.cpp, or a text. Returns its path.
  virtual std::string AddLibrary(const std::string& name) = 0;
  virtual std::string AddText(const std::string& name) = 0;
};
