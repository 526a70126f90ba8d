#pragma once

// The times of nodes that ONNX Runtime writes into a file:
//
//   for (const NodeTime& node : readNodeTimes(file)) ...

#include <cstdint>
#include <string>
#include <vector>

namespace kiv::ort {

struct NodeTime {
  // "Conv_3 (Conv)"
  std::string name;
  // All executions together.
  std::uint64_t microseconds;
};

// A Failure for a file that cannot be read.
std::vector<NodeTime> readNodeTimes(const std::string& file);

}  // namespace kiv::ort
