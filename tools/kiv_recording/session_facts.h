#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "recording/recording.h"

namespace kiv::tool {

// The contents of a recording in numbers and names. Sizes are in bytes.
struct SessionFacts {
  struct Tensor {
    std::string name;
    std::string owner;
    std::string elementType;
    std::uint32_t type = 0;
    std::vector<std::uint32_t> dimensions;
    std::uint64_t bytes = 0;
  };

  struct Graph {
    std::string name;
    std::uint64_t nodes = 0;
    std::uint64_t tensors = 0;
    std::uint64_t executions = 0;
  };

  struct Group {
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
  };

  std::map<std::string_view, std::uint64_t> functions;
  std::uint64_t contexts = 0;
  std::vector<Graph> graphs;
  std::map<std::string, std::uint64_t> operators;
  std::map<std::string, Group> elementTypes;
  std::vector<Tensor> largest;
  std::vector<Tensor> inputs;
  std::vector<Tensor> outputs;
  std::uint64_t executions = 0;
  std::set<std::string> opPackages;
  std::uint64_t binaries = 0;
  // Calls that could not be read.
  std::uint64_t unread = 0;
  std::uint64_t unknownStatements = 0;
};

// Goes through the calls once and shows the progress. From one thread.
SessionFacts collectFacts(const recording::Recording& recording);

}  // namespace kiv::tool
