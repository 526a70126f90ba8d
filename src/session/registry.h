#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "diagnostics/spin_lock.h"
#include "session/handles.h"

namespace kiv::session {

// Recorded objects by handle. Holds one reference to each; whoever finds one
// holds another, so that an object erased meanwhile lives on until its call
// ends. From any thread.
//
//   auto entry = registry.prepare(std::move(object));   // may throw
//   ...record the object's creation...
//   const Handle handle = registry.add(std::move(entry));
template <typename Object>
class Registry {
  using Map = std::unordered_map<Handle, std::shared_ptr<Object>>;

 public:
  // An object with its place in the registry, so that adding it cannot fail. Of
  // one that is never added nothing remains.
  class Entry {
   public:
    Entry(Registry& registry, typename Map::node_type node)
        : registry_(&registry), node_(std::move(node)) {}
    ~Entry() {
      if (registry_ != nullptr) registry_->giveBackPlace();
    }
    Entry(Entry&& other) noexcept
        : registry_(std::exchange(other.registry_, nullptr)),
          node_(std::move(other.node_)) {}
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    Entry& operator=(Entry&&) = delete;

    Object& operator*() const { return *node_.mapped(); }
    Object* operator->() const { return node_.mapped().get(); }
    const std::shared_ptr<Object>& object() const { return node_.mapped(); }

   private:
    friend class Registry;
    Registry* registry_;
    typename Map::node_type node_;
  };

  Entry prepare(std::shared_ptr<Object> object) {
    Map map;
    map.emplace(0, std::move(object));
    const std::lock_guard lock(lock_);
    objects_.reserve(objects_.size() + prepared_ + 1);
    ++prepared_;
    return Entry(*this, map.extract(map.begin()));
  }

  // Adds an object under the handle made from its address.
  Handle add(Entry entry) noexcept {
    const Handle handle = handleOf(entry.object().get());
    const std::lock_guard lock(lock_);
    insert(entry, handle);
    return handle;
  }

  // Adds an object under the next number, from 1.
  Handle addNumbered(Entry entry) noexcept {
    const std::lock_guard lock(lock_);
    insert(entry, ++lastNumber_);
    return lastNumber_;
  }

  // Null when the handle is unknown.
  std::shared_ptr<Object> find(Handle handle) const {
    const std::lock_guard lock(lock_);
    const auto found = objects_.find(handle);
    return found == objects_.end() ? nullptr : found->second;
  }

  // False when the handle is unknown. The object dies outside the lock.
  bool erase(Handle handle) noexcept {
    std::shared_ptr<Object> erased;
    const std::lock_guard lock(lock_);
    const auto found = objects_.find(handle);
    if (found == objects_.end()) return false;
    erased = std::move(found->second);
    objects_.erase(found);
    return true;
  }

 private:
  void insert(Entry& entry, Handle handle) noexcept {
    entry.node_.key() = handle;
    objects_.insert(std::move(entry.node_));
    --prepared_;
    entry.registry_ = nullptr;
  }

  void giveBackPlace() noexcept {
    const std::lock_guard lock(lock_);
    --prepared_;
  }

  mutable log::SpinLock lock_;
  Map objects_;
  // How many entries wait to be added.
  std::size_t prepared_ = 0;
  Handle lastNumber_ = 0;
};

}  // namespace kiv::session
