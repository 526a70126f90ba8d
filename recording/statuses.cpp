#include "recording/statuses.h"

#include <algorithm>
#include <iterator>

#include "KivCommon.h"

namespace kiv::recording {
namespace {

constexpr StatusName kStatuses[] = {
    {KIV_SUCCESS, "KIV_SUCCESS", "success"},
    {KIV_COMMON_ERROR_NOT_SUPPORTED, "KIV_COMMON_ERROR_NOT_SUPPORTED",
     "the library does not offer the function or the option"},
    {KIV_COMMON_ERROR_MEM_ALLOC, "KIV_COMMON_ERROR_MEM_ALLOC",
     "memory ran out, or an object could not be created"},
    {KIV_COMMON_ERROR_INVALID_ARGUMENT, "KIV_COMMON_ERROR_INVALID_ARGUMENT",
     "an argument that must not be null is null, or an option is unknown"},
    {KIV_COMMON_ERROR_GENERAL, "KIV_COMMON_ERROR_GENERAL",
     "the call was valid, its effect could not be had"},
    {KIV_BACKEND_ERROR_CANNOT_INITIALIZE, "KIV_BACKEND_ERROR_CANNOT_INITIALIZE",
     "the library could not get ready to work"},
    {KIV_BACKEND_ERROR_INVALID_ARGUMENT, "KIV_BACKEND_ERROR_INVALID_ARGUMENT",
     "an argument of a backend's call is invalid"},
    {KIV_BACKEND_ERROR_INVALID_HANDLE, "KIV_BACKEND_ERROR_INVALID_HANDLE",
     "the backend's handle is null or unknown"},
    {KIV_BACKEND_ERROR_NOTHING_TO_REPORT, "KIV_BACKEND_ERROR_NOTHING_TO_REPORT",
     "the library has no such thing to report"},
    {KIV_BACKEND_ERROR_OPTION_TIMING, "KIV_BACKEND_ERROR_OPTION_TIMING",
     "the option was given at a time when it is not allowed"},
    {KIV_BACKEND_ERROR_GENERAL, "KIV_BACKEND_ERROR_GENERAL",
     "the backend failed"},
    {KIV_CONTEXT_ERROR_INVALID_ARGUMENT, "KIV_CONTEXT_ERROR_INVALID_ARGUMENT",
     "an argument of a context's call is invalid"},
    {KIV_CONTEXT_ERROR_INVALID_HANDLE, "KIV_CONTEXT_ERROR_INVALID_HANDLE",
     "the context's handle is null or unknown"},
    {KIV_CONTEXT_ERROR_BINARY, "KIV_CONTEXT_ERROR_BINARY",
     "the context's binary cannot be used"},
    {KIV_CONTEXT_ERROR_GENERAL, "KIV_CONTEXT_ERROR_GENERAL",
     "the context failed"},
    {KIV_GRAPH_ERROR_INVALID_ARGUMENT, "KIV_GRAPH_ERROR_INVALID_ARGUMENT",
     "an argument of a graph's call is invalid"},
    {KIV_GRAPH_ERROR_INVALID_HANDLE, "KIV_GRAPH_ERROR_INVALID_HANDLE",
     "the graph's handle is null or unknown"},
    {KIV_GRAPH_ERROR_NAME_TAKEN, "KIV_GRAPH_ERROR_NAME_TAKEN",
     "the context has a graph of that name already"},
    {KIV_GRAPH_ERROR_INVALID_TENSOR, "KIV_GRAPH_ERROR_INVALID_TENSOR",
     "a tensor is invalid"},
    {KIV_TENSOR_ERROR_ALREADY_EXISTS, "KIV_TENSOR_ERROR_ALREADY_EXISTS",
     "the owner has a tensor of that id and name already"},
    {KIV_TENSOR_ERROR_INVALID_ARGUMENT, "KIV_TENSOR_ERROR_INVALID_ARGUMENT",
     "an argument of a tensor's call is invalid"},
    {KIV_TENSOR_ERROR_NAME_COLLISION, "KIV_TENSOR_ERROR_NAME_COLLISION",
     "the owner has a tensor of that id under another name"},
    {KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
     "KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE",
     "the tensor's element type is not supported"},
    {KIV_LOG_ERROR_NOT_CREATED, "KIV_LOG_ERROR_NOT_CREATED",
     "there is no logger"},
    {KIV_LOG_ERROR_INVALID_LEVEL, "KIV_LOG_ERROR_INVALID_LEVEL",
     "the log level is outside 1 to 5"},
    {KIV_LOG_ERROR_GENERAL, "KIV_LOG_ERROR_GENERAL", "the logger failed"},
    {KIV_PROFILE_ERROR_INVALID_HANDLE, "KIV_PROFILE_ERROR_INVALID_HANDLE",
     "the profile's handle is null or unknown"},
    {KIV_PROFILE_ERROR_GENERAL, "KIV_PROFILE_ERROR_GENERAL",
     "the profile failed"},
    {KIV_DEVICE_ERROR_INVALID_HANDLE, "KIV_DEVICE_ERROR_INVALID_HANDLE",
     "the device's handle is null or unknown"},
    {KIV_DEVICE_ERROR_GENERAL, "KIV_DEVICE_ERROR_GENERAL", "the device failed"},
};

}  // namespace

StatusName statusName(std::uint64_t code) {
  const auto* const found =
      std::ranges::find(kStatuses, code, &StatusName::code);
  return found == std::end(kStatuses) ? StatusName{code, {}, {}} : *found;
}

std::string describeStatus(std::uint64_t code) {
  const StatusName status = statusName(code);
  std::string text = std::to_string(code);
  if (status.name.empty()) return text;
  text.append(" (").append(status.name).append(": ");
  return text.append(status.meaning).append(")");
}

}  // namespace kiv::recording
