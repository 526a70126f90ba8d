#pragma once

#include "diagnostics/logger.h"
#include "diagnostics/status.h"

namespace kiv {

// A way to fail: the code that the client gets, the text that is logged.
struct Failure {
  Status status;
  const char* message;
};

// Logs a failure at error level, with the arguments of its text, and returns
// its code. For places that hold no lock; others go through Messages.
template <typename... Arguments>
Status fail(const Failure& failure, Arguments... arguments) {
  log::log(log::Level::kError, failure.message, arguments...);
  return failure.status;
}

}  // namespace kiv
