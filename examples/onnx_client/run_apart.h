#pragma once

#include <functional>
#include <optional>
#include <string>

namespace onnx_client {

// Runs a function in a process of its own and returns the bytes it made; null
// if it crashed or took more than a minute. For code that a damaged file may
// bring down. Text that the function prints to standard error is dropped.
std::optional<std::string> runApart(const std::function<std::string()>& make);

}  // namespace onnx_client
