#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

// The products that the rules are tested with: each a few changes of one good product. A case file
// holds those of one rule:
//
//   ## bad: the portal's file has other letters in its name
//   rename bin/META_INFO/Portal.xml bin/META_INFO/portal.xml
//   =>
//   bin/META_INFO/Portal.xml: error: ... [TEV101]
//
//   ## clean: ...
//
// Changes, a line each:
//   write FILE           its content follows, each line behind "| "
//   bytes FILE           the same, and "\E4" in it stands for that byte, "\5C" for "\"
//   change FILE          follows: lines "- OLD", to be replaced by the lines "+ NEW"; OLD occurs
//                        once
//   repeat FILE N        the same, N times before the last line of FILE; "%" in it is the number
//   remove PATH          a file or folder
//   rename FROM TO
//   folder PATH
//   library PATH NAME    a copy of the fixture library NAME
//   compose PATH PART... a library with these parts: exports=A,B data= needs= uses= rpath= runpath=
//                        version= requires=LIBRARY:VERSION machine=NUMBER; without exports= it
//                        exports Init and UnInit
//   link NEW OLD         another name of a file
//   cut FILE SIZE
//   plugins N            adds N plugins with descriptions and libraries
//   any_names            a case only for systems on which names of files may have any characters
//   and
//                        letter case counts
//   module N             the running module that the platform reports
//   system elf|pe        the system whose libraries are composed and checked, also in place of the
//                        fixture libraries; without it this system
//   writable FILE        as if every user may write it
//   no_program FILE      as if nobody may execute it
//
// Behind "=>" stand the findings, each as "PLACE: SEVERITY: MESSAGE [RULE]", then its related
// places as "PLACE: note: MESSAGE". The first bad case is the example in docs/check.md.

struct ProductCase {
  std::string rule;   // "TEV101": the name of the case file
  std::string title;  // behind "bad: " or "clean: "
  bool isClean = false;
  bool needsAnyNames = false;
  std::int32_t module = 1;
  std::string system;                // "elf", "pe" or empty
  std::set<std::string> writable;    // the files of such lines
  std::set<std::string> noProgram;   // the same
  std::vector<std::string> changes;  // the lines between the title and "=>"
  std::string findings;              // the lines behind "=>"; each ends in a line feed
};

/// The cases of all case files in `folder`, by rule. Throws std::runtime_error on a wrong line.
std::vector<ProductCase> ReadCases(const std::filesystem::path& folder);

/// Puts the good product `from` into the empty folder `to`, with libraries from `fixtures` for its
/// plugins, and makes the changes of `one`. Throws std::runtime_error on a change that cannot be
/// made.
void LayOutCase(const ProductCase& one, const std::filesystem::path& from,
                const std::filesystem::path& fixtures, const std::filesystem::path& to);
