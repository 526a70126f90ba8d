#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recording/program.h"

// Which outputs the executions of a recording have, in the order of the
// network, and what must be changed so that intermediate tensors are among
// them.
//
//   OutputPlan plan;
//   std::vector<std::string> problems = plan.make(*recording, bytes, {true});
//   const OutputPlan::Execution* execution = plan.execution(call);
//
// One thread at a time.
namespace kiv::tool {

// Intermediate tensors that become outputs: all, or those with these names.
struct OutputChoice {
  bool isAll = false;
  std::vector<std::string> names;

  bool isEmpty() const { return !isAll && names.empty(); }
};

// A tensor's record with copies of all that it points to.
class OwnedTensor {
 public:
  explicit OwnedTensor(const Kiv_Tensor_t& tensor);
  OwnedTensor(OwnedTensor&&) = default;
  OwnedTensor& operator=(OwnedTensor&&) = default;

  // As an output of version 1, without a buffer; valid as long as the object.
  Kiv_Tensor_t record();
  // bytes; nothing where an element or a dimension is not known.
  std::optional<std::uint64_t> size() const { return size_; }
  bool isScalar() const { return dimensions_.empty(); }

 private:
  Kiv_TensorV1_t record_{};
  std::string name_;
  std::vector<std::uint32_t> dimensions_;
  std::vector<Kiv_ScaleOffset_t> scaleOffsets_;
  std::vector<float> scales_;
  std::vector<std::int32_t> offsets_;
  std::optional<std::uint64_t> size_;
};

class OutputPlan {
 public:
  // An intermediate tensor that becomes an output.
  struct Added {
    OwnedTensor tensor;
    // The call that creates it.
    std::size_t call = 0;
  };
  struct Execution {
    std::string graph;
    // The execution's number in its graph, from 0.
    std::uint64_t number = 0;
    // Indexes in added().
    std::vector<std::size_t> added;
    // Indexes of the outputs, the recorded ones first and then those that are
    // added, as the nodes produce them.
    std::vector<std::size_t> order;
  };
  // A tensor of a node whose type changes.
  struct NodeTensor {
    bool isOutput = false;
    std::uint32_t index = 0;
  };

  // Looks through the whole recording. What keeps a chosen tensor from being an
  // output is returned, a line each; the plan is then of no use. `notes`
  // receives what is left out where all are chosen.
  std::vector<std::string> make(const recording::Recording& recording,
                                std::span<std::byte> data,
                                const OutputChoice& choice,
                                std::vector<std::string>& notes);

  std::vector<Added>& added() { return added_; }
  // Whether the call creates a tensor that becomes an output: its index.
  std::optional<std::size_t> createdBy(std::size_t call) const;
  std::span<const NodeTensor> changesOfNode(std::size_t call) const;
  const Execution* execution(std::size_t call) const;

 private:
  friend class PlanMaker;

  std::vector<Added> added_;
  std::map<std::size_t, std::size_t> created_;
  std::map<std::size_t, std::vector<NodeTensor>> nodes_;
  std::map<std::size_t, Execution> executions_;
};

}  // namespace kiv::tool
