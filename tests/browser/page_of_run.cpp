// page_of_run < RUN: prints the page of a run that is written as in tests/support/RunText.h.

#include <iostream>
#include <iterator>
#include <string>

#include "tests/support/RunText.h"
#include "workbench/report/ReportHtml.h"

int main() {
  const std::string text((std::istreambuf_iterator<char>(std::cin)),
                         std::istreambuf_iterator<char>());
  std::cout << ReportHtml(MakeTimeline(RunFromText(text)));
  return 0;
}
