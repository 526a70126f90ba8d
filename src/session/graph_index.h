#pragma once

#include <mutex>
#include <unordered_map>
#include <vector>

#include "session/handles.h"

namespace kiv::session {

// Which context a graph belongs to, by their handles. From any thread.
class GraphIndex {
 public:
  void add(Handle graph, Handle context) {
    const std::lock_guard lock(mutex_);
    contexts_[graph] = context;
  }

  // 0 when the graph is unknown.
  Handle contextOf(Handle graph) const {
    const std::lock_guard lock(mutex_);
    const auto found = contexts_.find(graph);
    return found == contexts_.end() ? 0 : found->second;
  }

  void erase(const std::vector<Handle>& graphs) {
    const std::lock_guard lock(mutex_);
    for (const Handle graph : graphs) contexts_.erase(graph);
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<Handle, Handle> contexts_;
};

}  // namespace kiv::session
