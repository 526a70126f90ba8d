#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>

#include "session/handles.h"

namespace kiv::session {

// Recorded objects by handle. Holds one reference to each; whoever finds one
// holds another, so that an object erased meanwhile lives on until its call
// ends. From any thread.
template <typename Object>
class Registry {
 public:
  // Adds an object under the handle made from its address.
  Handle add(std::shared_ptr<Object> object) {
    const Handle handle = handleOf(object.get());
    const std::lock_guard lock(mutex_);
    objects_[handle] = std::move(object);
    return handle;
  }

  // Null when the handle is unknown.
  std::shared_ptr<Object> find(Handle handle) const {
    const std::lock_guard lock(mutex_);
    const auto found = objects_.find(handle);
    return found == objects_.end() ? nullptr : found->second;
  }

  // False when the handle is unknown. The object dies outside the lock.
  bool erase(Handle handle) {
    std::shared_ptr<Object> erased;
    const std::lock_guard lock(mutex_);
    const auto found = objects_.find(handle);
    if (found == objects_.end()) return false;
    erased = std::move(found->second);
    objects_.erase(found);
    return true;
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<Handle, std::shared_ptr<Object>> objects_;
};

}  // namespace kiv::session
