#include "reference/os/UncaughtException.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <typeinfo>

void DescribeUncaughtException(CrashText& text) {
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (type == nullptr) {
    text.Add("std::terminate() was called");
    return;
  }
  int error = 0;
  char* readable = abi::__cxa_demangle(type->name(), nullptr, nullptr, &error);
  text.Add("an exception was not caught: ").Add(readable != nullptr ? readable : type->name());
  std::free(readable);
  try {
    throw;
  } catch (const std::exception& exception) {
    text.Add(": ").AddEscaped(exception.what());
  } catch (...) {
    return;  // only its type is known
  }
}
