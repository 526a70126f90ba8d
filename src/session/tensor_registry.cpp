#include "session/tensor_registry.h"

#include <utility>

#include "output/numbers.h"

namespace kiv::session {

TensorRegistry::TensorRegistry(std::string ownerVariable,
                               std::shared_ptr<const TensorRegistry> outer)
    : ownerVariable_(std::move(ownerVariable)), outer_(std::move(outer)) {}

std::string TensorRegistry::makeVariable() {
  const std::lock_guard lock(mutex_);
  return ownerVariable_ + "_tensor_" + output::decimal(nextNumber_++);
}

TensorRegistry::Added TensorRegistry::add(
    std::uint32_t id, std::string_view clientName,
    std::shared_ptr<const Variable> variable) {
  std::string name(clientName);
  const std::lock_guard lock(mutex_);
  if (variables_.contains(id)) {
    return idsByName_.contains(name) ? Added::kNameExists : Added::kIdExists;
  }
  variables_.emplace(id, std::move(variable));
  idsByName_.insert_or_assign(std::move(name), id);
  return Added::kYes;
}

// Registries may be nested deeply, so neither the search nor the end recurses.
std::shared_ptr<const Variable> TensorRegistry::find(std::uint32_t id) const {
  for (const TensorRegistry* registry = this; registry != nullptr;
       registry = registry->outer_.get()) {
    const std::lock_guard lock(registry->mutex_);
    const auto found = registry->variables_.find(id);
    if (found != registry->variables_.end()) return found->second;
  }
  return nullptr;
}

TensorRegistry::~TensorRegistry() {
  auto outer = std::move(outer_);
  while (outer != nullptr && outer.use_count() == 1) {
    auto next = std::move(outer->outer_);
    outer = std::move(next);
  }
}

}  // namespace kiv::session
