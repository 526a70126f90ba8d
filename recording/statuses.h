#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kiv::recording {

// The name of a status code in the API's headers, and its meaning in words;
// both empty for a code that the headers do not have.
struct StatusName {
  std::uint64_t code = 0;
  std::string_view name;
  std::string_view meaning;
};
StatusName statusName(std::uint64_t code);

// "6001 (KIV_GRAPH_ERROR_INVALID_HANDLE: the graph's handle is null or
// unknown)"
std::string describeStatus(std::uint64_t code);

}  // namespace kiv::recording
