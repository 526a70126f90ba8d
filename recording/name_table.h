#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace kiv::recording {

// Values by name. The names are views of memory that outlives the table.
//
//   NameTable<int> table;
//   auto [value, isNew] = table.insert("graph_0", 3);
//   if (int* found = table.find("graph_0")) ...
//
// clear() takes as long as there are names and keeps the memory, so that one
// table serves call after call. One thread at a time.
template <typename Type>
class NameTable {
 public:
  struct Entry {
    std::string_view name;
    // Spares looks at the names themselves, which may lie far apart.
    std::uint64_t hash = 0;
    Type value{};
  };
  struct Insertion {
    Type& value;
    bool isNew;
  };

  // A name that is there keeps its value.
  Insertion insert(std::string_view name, Type value) {
    if (2 * (entries_.size() + 1) > slots_.size()) grow();
    const std::uint64_t hash = hashOf(name);
    const std::size_t place = slotOf(name, hash);
    std::uint32_t& slot = slots_[place];
    if (slot != 0) return {entries_[slot - 1].value, false};
    entries_.push_back({name, hash, value});
    used_.push_back(static_cast<std::uint32_t>(place));
    slot = static_cast<std::uint32_t>(entries_.size());
    return {entries_.back().value, true};
  }

  Type* find(std::string_view name) {
    if (slots_.empty()) return nullptr;
    const std::uint32_t slot = slots_[slotOf(name, hashOf(name))];
    return slot == 0 ? nullptr : &entries_[slot - 1].value;
  }
  const Type* find(std::string_view name) const {
    return const_cast<NameTable*>(this)->find(name);
  }

  // In the order of insertion.
  const std::vector<Entry>& entries() const { return entries_; }

  void clear() {
    for (const std::uint32_t slot : used_) slots_[slot] = 0;
    entries_.clear();
    used_.clear();
  }

 private:
  // Names differ at their ends and in a number in their midst.
  static std::uint64_t hashOf(std::string_view name) {
    std::uint64_t result = name.size();
    const char* at = name.data();
    std::size_t left = name.size();
    for (; left >= 8; left -= 8, at += 8) {
      std::uint64_t word = 0;
      std::memcpy(&word, at, sizeof(word));
      result = (std::rotl(result, 23) ^ word) * 0x9E3779B97F4A7C15U;
    }
    std::uint64_t word = 0;
    std::memcpy(&word, at, left);
    result = (std::rotl(result, 23) ^ word) * 0x9E3779B97F4A7C15U;
    return result ^ (result >> 32);
  }

  std::size_t slotOf(std::string_view name, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
      const std::uint32_t slot = slots_[i];
      if (slot == 0) return i;
      const Entry& entry = entries_[slot - 1];
      if (entry.hash == hash && entry.name == name) return i;
    }
  }

  void grow() {
    slots_.assign(slots_.empty() ? 64 : 2 * slots_.size(), 0);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      std::size_t place = entries_[i].hash & mask;
      while (slots_[place] != 0) place = (place + 1) & mask;
      slots_[place] = static_cast<std::uint32_t>(i + 1);
      used_[i] = static_cast<std::uint32_t>(place);
    }
  }

  std::vector<Entry> entries_;
  // Numbers of entries, from 1; 0 where there is none.
  std::vector<std::uint32_t> slots_;
  // The slot of each entry.
  std::vector<std::uint32_t> used_;
};

}  // namespace kiv::recording
