#include "session/objects.h"

namespace kiv::session {

SaverGraph::SaverGraph(std::string name, std::uint32_t program,
                       std::shared_ptr<const TensorRegistry> outer)
    : NamedObject(std::move(name), program),
      tensors_(std::make_shared<TensorRegistry>(variable().name(),
                                                std::move(outer))) {}

SaverContext::SaverContext(std::string name, std::uint32_t program)
    : NamedObject(std::move(name), program),
      tensors_(std::make_shared<TensorRegistry>(variable().name(), nullptr)) {}

bool SaverContext::reserveGraphName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  return graphsByName_.emplace(name, nullptr).second;
}

void SaverContext::addGraph(const std::string& name,
                            std::shared_ptr<SaverGraph> graph) {
  const std::lock_guard lock(mutex_);
  graphsByHandle_[handleOf(graph.get())] = graph;
  graphsByName_[name] = std::move(graph);
}

void SaverContext::dropGraphName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  graphsByName_.erase(name);
}

std::shared_ptr<SaverGraph> SaverContext::findGraph(Handle handle) const {
  const std::lock_guard lock(mutex_);
  const auto found = graphsByHandle_.find(handle);
  return found == graphsByHandle_.end() ? nullptr : found->second;
}

std::shared_ptr<SaverGraph> SaverContext::findGraph(
    const std::string& name) const {
  const std::lock_guard lock(mutex_);
  const auto found = graphsByName_.find(name);
  return found == graphsByName_.end() ? nullptr : found->second;
}

std::vector<Handle> SaverContext::graphHandles() const {
  const std::lock_guard lock(mutex_);
  std::vector<Handle> handles;
  for (const auto& [handle, graph] : graphsByHandle_) handles.push_back(handle);
  return handles;
}

}  // namespace kiv::session
