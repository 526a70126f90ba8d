#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "diagnostics/spin_lock.h"
#include "output/call_watch.h"

// The recorder's handles by the real backend's. The client has the
// real handles; each is looked up here before the recorder gets a call.
namespace kiv::relay {

// A handle that the recorder has never given.
void* unknownHandle();

// A backend, device, profile or context.
struct Object {
  void* recorded = nullptr;
};

struct Graph {
  void* recorded = nullptr;
  // The real handle of its context.
  void* context = nullptr;
  std::string name = {};
  output::ExecutionCount executions = {};
};

// Objects of one kind by their real handles. Whoever finds one holds it, so
// that it lives on when another thread frees it. From any thread.
//
//   graphs.add(&realGraph, {.recorded = graph, .context = context});
//   api::graphFinalize(graphs.recorded(realGraph), nullptr, nullptr);
//   graphs.erase(realGraph);
template <typename Kind>
class HandleTable {
 public:
  // Adds an object under the handle that the real backend has stored, in the
  // place of one that had the handle before. An object that the recorder does
  // not have leaves it unknown.
  void add(void* const* real, Kind object) {
    if (real == nullptr) return;
    if (object.recorded == nullptr) return erase(*real);
    auto made = std::make_shared<Kind>(std::move(object));
    const std::lock_guard lock(lock_);
    objects_[*real].swap(made);
  }

  void erase(void* real) {
    std::shared_ptr<Kind> erased;
    const std::lock_guard lock(lock_);
    const auto found = objects_.find(real);
    if (found == objects_.end()) return;
    erased = std::move(found->second);
    objects_.erase(found);
  }

  void eraseOfContext(void* context) {
    const std::lock_guard lock(lock_);
    std::erase_if(objects_, [context](const auto& entry) {
      return entry.second->context == context;
    });
  }

  // Null when the handle is unknown.
  std::shared_ptr<Kind> find(void* real) const {
    const std::lock_guard lock(lock_);
    const auto found = objects_.find(real);
    return found == objects_.end() ? nullptr : found->second;
  }

  // The recorder's handle for a real one.
  void* recorded(void* real) const {
    if (real == nullptr) return nullptr;
    const auto object = find(real);
    return object == nullptr ? unknownHandle() : object->recorded;
  }

 private:
  mutable log::SpinLock lock_;
  std::unordered_map<void*, std::shared_ptr<Kind>> objects_;
};

}  // namespace kiv::relay
