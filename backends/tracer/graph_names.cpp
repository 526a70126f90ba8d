#include "graph_names.h"

namespace kiv::tracer {
namespace {

std::string textOf(const char* name) { return name == nullptr ? "" : name; }

}  // namespace

void GraphNames::add(Kiv_ContextHandle_t context, const char* name,
                     Kiv_GraphHandle_t graph) {
  const std::lock_guard lock(mutex_);
  graphs_[{context, textOf(name)}] = graph;
  contexts_[graph] = context;
}

Kiv_GraphHandle_t GraphNames::findOrCreate(Kiv_ContextHandle_t context,
                                           const char* name,
                                           HandleTable& handles) {
  const std::lock_guard lock(mutex_);
  Kiv_GraphHandle_t& graph = graphs_[{context, textOf(name)}];
  if (graph == nullptr) {
    graph = handles.create(Kind::kGraph);
    contexts_[graph] = context;
  }
  return graph;
}

Kiv_ContextHandle_t GraphNames::contextOf(Kiv_GraphHandle_t graph) const {
  const std::lock_guard lock(mutex_);
  const auto found = contexts_.find(graph);
  return found == contexts_.end() ? nullptr : found->second;
}

}  // namespace kiv::tracer
