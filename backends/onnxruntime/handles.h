#pragma once

// Hands out handles and finds what they stand for:
//
//   Handles<Graph>::instance().add(graph, context);
//
// A handle is a number that is never given twice, so a handle of an object that
// was freed is known to be wrong. The tables are never destroyed: sessions that
// a client leaves behind cannot be released while the process ends, since
// ONNX Runtime's threads are then no longer to be stopped. Any thread may use
// it.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace kiv::ort {

inline void* nextHandle() {
  static std::atomic<std::uintptr_t> last{0x1000};
  return reinterpret_cast<void*>(++last);
}

template <typename Object>
class Handles {
 public:
  static Handles& instance() {
    static auto* const kHandles = new Handles;
    return *kHandles;
  }

  void* add(std::shared_ptr<Object> object) {
    const std::scoped_lock lock(mutex_);
    void* handle = nextHandle();
    objects_.emplace(handle, std::move(object));
    return handle;
  }

  // Null for an unknown handle.
  std::shared_ptr<Object> find(void* handle) const {
    const std::scoped_lock lock(mutex_);
    const auto found = objects_.find(handle);
    return found == objects_.end() ? nullptr : found->second;
  }

  // The handle is unknown afterwards; returns null if it is already.
  std::shared_ptr<Object> remove(void* handle) {
    const std::scoped_lock lock(mutex_);
    const auto found = objects_.find(handle);
    if (found == objects_.end()) return nullptr;
    std::shared_ptr<Object> object = std::move(found->second);
    objects_.erase(found);
    return object;
  }

  template <typename Predicate>
  void removeIf(Predicate predicate) {
    const std::scoped_lock lock(mutex_);
    std::erase_if(objects_,
                  [&](const auto& entry) { return predicate(*entry.second); });
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<void*, std::shared_ptr<Object>> objects_;
};

}  // namespace kiv::ort
