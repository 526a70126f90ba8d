#pragma once

#include <cstdarg>

#include "diagnostics/logger.h"

// The recorder's messages on standard error, for a client that makes no logger
// and cannot be changed: the variable KIV_SAVER_LOG of the environment says up
// to which level ("error", "warn", "info", "verbose", "debug"). Without it
// nothing is printed. Any thread may call these functions; they need no memory
// but for the variable itself, and none to find it unset.
//
//   KivSaver[4711]: error: /full/disk/saver_output.c: No space left on device
namespace kiv::log {

// Whether anything is printed.
bool usesStandardError() noexcept;

// A message of the log, if its level is wanted.
void printToStandardError(Level level, const char* format,
                          va_list arguments) noexcept;

// A line of its own in the form of printf, whatever the level.
void report(const char* format, ...) noexcept;

// The first file that fails, and why; nothing after that.
void reportFailure(const char* path, const char* reason) noexcept;

}  // namespace kiv::log
