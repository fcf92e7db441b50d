#include <algorithm>
#include <cctype>
#include <string>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr std::size_t kDigits = 32;

bool IsHexDigit(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool IsChecksum(const std::string& text) {
  return text.size() == kDigits && std::all_of(text.begin(), text.end(), &IsHexDigit);
}

bool SameDigits(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
    return std::tolower(x) == std::tolower(y);
  });
}

/// What is wrong with the package's checksum; empty when nothing is, or when there is no file.
std::string Fault(const NamedPackage& package) {
  const std::string stated = "the MD5 of the package " + Quoted(package.name) + " is stated as " +
                             Quoted(package.checksum);
  if (!IsChecksum(package.checksum)) {
    return stated + ", which is not an MD5: that has 32 hexadecimal digits and nothing else";
  }
  if (package.md5.empty() || SameDigits(package.md5, package.checksum)) return std::string();
  return stated + ", but " + package.file + " has " + Quoted(package.md5) +
         ": the package is damaged, or was replaced without its checksum";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kInstalled);
  for (const NamedPackage& package : product.packages) {
    if (package.checksum.empty()) continue;
    std::string fault = Fault(package);
    if (fault.empty()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, package.checksumPlace);
    finding.message = std::move(fault);
    finding.plugin = package.owner;
    finding.subject = package.what;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(WrongChecksum) = {
    "TEV511",
    Severity::kError,
    "A package's checksum does not match the file, or is no checksum",
    "<MD5> of <ClientPackage> and the attribute ClientPackageMD5 in InstalledProducts.xml are the "
    "MD5 of a package, as 32 hexadecimal digits. The frame hands them on and compares them with "
    "nothing; who receives the package can refuse it. The rule compares them with the file, if it "
    "lies in the folder of its addon, in TevAddons, beside the executables or beside Product.xml.",
    R"(ClientPackageMD5="92eb5ffee6ae2fec3ad71c77753157")",
    "State the MD5 of the package as it is, or put the right package in its place.",
    &Check};
