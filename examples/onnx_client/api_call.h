#pragma once

// Calls of the API with their status checked:
//
//   call("graphAddNode", api.graphAddNode, graph, opConfig);

#include <cstdint>
#include <string>

#include "KivInterface.h"
#include "errors.h"

namespace onnx_client {

inline void throwFailure(const char* name, std::uint32_t code) {
  throw ClientError(std::string(name) + " failed with " + std::to_string(code));
}

// Returns the call's status; a ClientError if the library has no such function.
template <typename Result, typename... Parameters, typename... Arguments>
std::uint32_t tryCall(const char* name, Result (*function)(Parameters...),
                      Arguments... arguments) {
  if (function == nullptr)
    throw ClientError(std::string("the library has no ") + name);
  return static_cast<std::uint32_t>(function(arguments...));
}

// Makes the call; a ClientError with the code if it fails.
template <typename Function, typename... Arguments>
void call(const char* name, Function function, Arguments... arguments) {
  const std::uint32_t code = tryCall(name, function, arguments...);
  if (code != KIV_SUCCESS) throwFailure(name, code);
}

}  // namespace onnx_client
