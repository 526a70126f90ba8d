#pragma once

// The times of nodes that ONNX Runtime writes into a file:
//
//   ScratchDirectory scratch;
//   ... a session whose profile is in scratch.path() ...
//   for (const NodeTime& node : readNodeTimes(file)) ...

#include <cstdint>
#include <string>
#include <vector>

namespace kiv::ort {

// A directory of its own, removed with all that is in it.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

struct NodeTime {
  // "Conv_3 (Conv)"
  std::string name;
  // All executions together.
  std::uint64_t microseconds;
};

// A Failure for a file that cannot be read.
std::vector<NodeTime> readNodeTimes(const std::string& file);

}  // namespace kiv::ort
