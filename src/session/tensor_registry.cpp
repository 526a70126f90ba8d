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

std::shared_ptr<const Variable> TensorRegistry::find(std::uint32_t id) const {
  {
    const std::lock_guard lock(mutex_);
    const auto found = variables_.find(id);
    if (found != variables_.end()) return found->second;
  }
  return outer_ == nullptr ? nullptr : outer_->find(id);
}

}  // namespace kiv::session
