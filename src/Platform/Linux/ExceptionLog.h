#pragma once

#include "Platform/Platform.h"

namespace korvo {

/// Exceptions that nobody catches.
namespace ExceptionLog {

/// Has `handler` called with each of them, on the thread that fails; the program then ends as it would have done.
/// Source: std::set_terminate, the Itanium C++ ABI for the name, backtrace(3) for the calls.
void install(void (*handler)(const UncaughtException &exception));

} // namespace ExceptionLog

} // namespace korvo
