#include "session/tensor_registry.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "session/hashed_text.h"

namespace kiv::session {

TensorRegistry::TensorRegistry(std::string ownerVariable,
                               std::shared_ptr<const TensorRegistry> outer)
    : ownerVariable_(std::move(ownerVariable)), outer_(std::move(outer)) {}

TensorRegistry::Room::Room(TensorRegistry& registry) : registry_(registry) {
  constexpr std::size_t kFirstRows = 16;
  const std::lock_guard lock(registry.lock_);
  std::vector<Row>& rows = registry.rows_;
  const std::size_t needed = rows.size() + registry.promised_ + 1;
  if (needed > rows.capacity())
    rows.reserve(std::max({needed, 2 * rows.capacity(), kFirstRows}));
  ++registry.promised_;
}

TensorRegistry::Room::~Room() {
  const std::lock_guard lock(registry_.lock_);
  --registry_.promised_;
}

std::uint32_t TensorRegistry::nextNumber() {
  const std::lock_guard lock(lock_);
  return nextNumber_++;
}

// Ids of one owner are often consecutive, so the row's place can be guessed.
TensorRegistry::Row* TensorRegistry::find(std::uint32_t id) const {
  if (rows_.empty() || id < rows_.front().id || id > rows_.back().id)
    return nullptr;
  const std::size_t guess = id - rows_.front().id;
  if (guess < rows_.size() && rows_[guess].id == id) return &rows_[guess];
  const auto found = std::ranges::lower_bound(rows_, id, {}, &Row::id);
  return found != rows_.end() && found->id == id ? &*found : nullptr;
}

// The names of an owner's tensors are compared only for an id that comes again.
TensorRegistry::Added TensorRegistry::add(
    const Room&, std::uint32_t id, std::string_view clientName,
    std::optional<Creation> creation) noexcept {
  const std::uint64_t nameHash = HashedText::hashOf(clientName);
  const std::lock_guard lock(lock_);
  if (find(id) != nullptr) {
    const bool nameExists = std::ranges::any_of(
        rows_, [nameHash](const Row& row) { return row.nameHash == nameHash; });
    return nameExists ? Added::kNameExists : Added::kIdExists;
  }
  const std::uint32_t number = creation ? creation->number : kNotRecorded;
  const std::uint32_t program = creation ? creation->programNumber : 0;
  const auto place = rows_.empty() || rows_.back().id < id
                         ? rows_.end()
                         : std::ranges::upper_bound(rows_, id, {}, &Row::id);
  rows_.insert(place, {id, number, program, program, nameHash});
  return Added::kYes;
}

void TensorRegistry::setClientId(std::uint32_t clientId, std::uint32_t id) {
  const std::lock_guard lock(lock_);
  clientIds_[clientId] = id;
}

std::uint32_t TensorRegistry::idOfClients(std::uint32_t clientId) const {
  if (clientIds_.empty()) return clientId;
  const auto found = clientIds_.find(clientId);
  return found == clientIds_.end() ? clientId : found->second;
}

// Registries may be nested deeply, so neither the search nor the end recurses.
std::optional<TensorRegistry::Use> TensorRegistry::use(
    std::uint32_t id, std::uint32_t programNumber) const {
  for (const TensorRegistry* registry = this; registry != nullptr;
       registry = registry->outer_.get()) {
    const std::lock_guard lock(registry->lock_);
    Row* row = registry->find(registry->idOfClients(id));
    if (row == nullptr) continue;
    if (row->number == kNotRecorded) return std::nullopt;
    const std::uint32_t before = std::exchange(row->lastUsedIn, programNumber);
    return Use{registry->ownerVariable_, row->number,
               before != programNumber && programNumber != row->declaredIn};
  }
  return std::nullopt;
}

TensorRegistry::~TensorRegistry() {
  auto outer = std::move(outer_);
  while (outer != nullptr && outer.use_count() == 1) {
    auto next = std::move(outer->outer_);
    outer = std::move(next);
  }
}

}  // namespace kiv::session
