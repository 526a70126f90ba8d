#include "session/objects.h"

namespace kiv::session {

SaverGraph::SaverGraph(std::string name, std::uint32_t programNumber,
                       std::weak_ptr<SaverContext> context,
                       std::shared_ptr<const TensorRegistry> outer)
    : NamedObject(std::move(name), programNumber),
      context_(std::move(context)),
      tensors_(std::make_shared<TensorRegistry>(variable().name(),
                                                std::move(outer))) {}

SaverContext::SaverContext(std::string name, std::uint32_t programNumber)
    : NamedObject(std::move(name), programNumber),
      tensors_(std::make_shared<TensorRegistry>(variable().name(), nullptr)) {}

bool SaverContext::reserveGraphName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  return graphs_.emplace(name, nullptr).second;
}

bool SaverContext::setGraph(const std::string& name,
                            std::shared_ptr<SaverGraph> graph) noexcept {
  const std::lock_guard lock(mutex_);
  const auto reserved = graphs_.find(name);
  if (isFreed_ || reserved == graphs_.end()) return false;
  reserved->second = std::move(graph);
  return true;
}

void SaverContext::dropGraphName(const std::string& name) noexcept {
  const std::lock_guard lock(mutex_);
  graphs_.erase(name);
}

std::shared_ptr<SaverGraph> SaverContext::findGraph(
    const std::string& name) const {
  const std::lock_guard lock(mutex_);
  const auto found = graphs_.find(name);
  return found == graphs_.end() ? nullptr : found->second;
}

}  // namespace kiv::session
