#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "diagnostics/spin_lock.h"

namespace kiv::session {

// The tensors of one context or graph, found again by id. A tensor's variable
// is its owner's + "_tensor_" + the tensor's number, which makes a tensor a row
// of 24 bytes. From any thread.
class TensorRegistry {
 public:
  enum class Added { kYes, kNameExists, kIdExists };

  // One more row, which adding a tensor then cannot lack.
  class Room {
   public:
    explicit Room(TensorRegistry& registry);
    ~Room();
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;

   private:
    TensorRegistry& registry_;
  };

  // A tensor's creation in the recording.
  struct Creation {
    std::uint32_t number;
    // The program that declares the tensor's variable.
    std::uint32_t programNumber;
  };

  // A tensor as a later call refers to it.
  struct Use {
    // Lives as long as the registries do.
    std::string_view ownerVariable;
    std::uint32_t number;
    // Whether it is the first use in a program that does not declare it.
    bool isNewlyUndeclared;
  };

  // `outer` is where a tensor is looked up that is not found here: the
  // registry of the graph above a subgraph, or of a graph's context.
  TensorRegistry(std::string ownerVariable,
                 std::shared_ptr<const TensorRegistry> outer);
  ~TensorRegistry();
  TensorRegistry(const TensorRegistry&) = delete;
  TensorRegistry& operator=(const TensorRegistry&) = delete;

  // Numbers of tensors, from 0.
  std::uint32_t nextNumber();

  // Registers a tensor. One whose creation is not in the recording is not
  // found later.
  Added add(const Room& room, std::uint32_t id, std::string_view clientName,
            std::optional<Creation> creation) noexcept;

  // Has a tensor of this registry found by the id that the client knows it by,
  // where another library has given that; kNoTensor for one that is not here.
  static constexpr std::uint32_t kNoTensor = 0;
  void setClientId(std::uint32_t clientId, std::uint32_t id);

  // The tensor of that id, here or further out; nothing when there is none.
  std::optional<Use> use(std::uint32_t id, std::uint32_t programNumber) const;

 private:
  struct Row {
    std::uint32_t id;
    std::uint32_t number;
    std::uint32_t declaredIn;
    std::uint32_t lastUsedIn;
    std::uint64_t nameHash;
  };
  static constexpr std::uint32_t kNotRecorded = 0xFFFFFFFF;

  Row* find(std::uint32_t id) const;
  std::uint32_t idOfClients(std::uint32_t clientId) const;

  const std::string ownerVariable_;
  // Changed at the end only.
  mutable std::shared_ptr<const TensorRegistry> outer_;
  // Held for some instructions, or while the rows move.
  mutable log::SpinLock lock_;
  std::uint32_t nextNumber_ = 0;
  // By id, which mostly is the order of the creations.
  mutable std::vector<Row> rows_;
  // How many rows are promised.
  std::size_t promised_ = 0;
  // Empty where clients know tensors by the ids of this library.
  std::unordered_map<std::uint32_t, std::uint32_t> clientIds_;
};

}  // namespace kiv::session
