#pragma once

// The frame around the work of every function of the library's table:
//
//   return enter("graphFinalize", KIV_CONTEXT_ERROR_GENERAL, [&] {
//     finalize(*require<Graph>(handle, KIV_GRAPH_ERROR_INVALID_HANDLE), ...);
//   });
//
// A failure becomes the call's status and one error in the log.

#include <memory>
#include <string>

#include "KivCommon.h"
#include "failure.h"
#include "handles.h"

namespace kiv::ort {

// The status of the exception that is being handled, which is logged.
Kiv_ErrorHandle_t reportFailure(const char* function,
                                Kiv_Status_t otherwise) noexcept;

// `otherwise` is the status of failures that bring none of their own.
template <typename Work>
Kiv_ErrorHandle_t enter(const char* function, Kiv_Status_t otherwise,
                        Work work) noexcept {
  try {
    work();
    return KIV_SUCCESS;
  } catch (...) {
    return reportFailure(function, otherwise);
  }
}

[[noreturn]] inline void refuse(Kiv_Status_t code, const std::string& why) {
  throw Failure(code, why);
}

// The object of a handle; a Failure with the code if there is none.
template <typename Object>
std::shared_ptr<Object> require(void* handle, Kiv_Status_t code) {
  auto object = Handles<Object>::instance().find(handle);
  if (object == nullptr) {
    refuse(code,
           handle == nullptr ? "the handle is null" : "the handle is unknown");
  }
  return object;
}

// As above, but null for a null handle.
template <typename Object>
std::shared_ptr<Object> optional(void* handle, Kiv_Status_t code) {
  return handle == nullptr ? nullptr : require<Object>(handle, code);
}

// Calls the function with each record of a config list, which may be null.
template <typename Config, typename Function>
void forEachConfig(const Config** list, Function function) {
  for (; list != nullptr && *list != nullptr; ++list) function(**list);
}

}  // namespace kiv::ort
