#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "session/variable.h"

namespace kiv::session {

// The tensors of one context or graph: their variables, found again by id. From
// any thread.
class TensorRegistry {
 public:
  enum class Added { kYes, kNameExists, kIdExists };

  // `outer` is where a tensor is looked up that is not found here: the
  // registry of the graph above a subgraph, or of a graph's context.
  TensorRegistry(std::string ownerVariable,
                 std::shared_ptr<const TensorRegistry> outer);
  ~TensorRegistry();
  TensorRegistry(const TensorRegistry&) = delete;
  TensorRegistry& operator=(const TensorRegistry&) = delete;

  // The next variable: owner's + "_tensor_" + a counter from 0.
  std::string makeVariable();

  // Registers a tensor. One whose creation is not in the recording has no
  // variable and is not found.
  Added add(std::uint32_t id, std::string_view clientName,
            std::shared_ptr<const Variable> variable);

  // The variable that created the tensor of that id, here or further out; null
  // when there is none.
  std::shared_ptr<const Variable> find(std::uint32_t id) const;

 private:
  const std::string ownerVariable_;
  // Changed at the end only.
  mutable std::shared_ptr<const TensorRegistry> outer_;
  mutable std::mutex mutex_;
  std::uint32_t nextNumber_ = 0;
  std::unordered_map<std::uint32_t, std::shared_ptr<const Variable>> variables_;
  std::unordered_map<std::string, std::uint32_t> idsByName_;
};

}  // namespace kiv::session
