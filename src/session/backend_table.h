#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "session/handles.h"
#include "session/objects.h"

namespace kiv::session {

// The backends by handle. Handles count from 1. From any thread.
class BackendTable {
 public:
  Handle add(std::string variable, std::uint32_t program) {
    auto entry = std::make_shared<SaverBackend>(std::move(variable), program);
    const std::lock_guard lock(mutex_);
    backends_.emplace(next_, std::move(entry));
    return next_++;
  }

  // Null when the handle is unknown.
  std::shared_ptr<const SaverBackend> find(Handle handle) const {
    const std::lock_guard lock(mutex_);
    const auto found = backends_.find(handle);
    return found == backends_.end() ? nullptr : found->second;
  }

  bool erase(Handle handle) {
    const std::lock_guard lock(mutex_);
    return backends_.erase(handle) != 0;
  }

 private:
  mutable std::mutex mutex_;
  Handle next_ = 1;
  std::unordered_map<Handle, std::shared_ptr<const SaverBackend>> backends_;
};

}  // namespace kiv::session
