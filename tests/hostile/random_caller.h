#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "hostile/random_records.h"

namespace kiv::test {

// Makes random calls, chosen by a source of bytes. A fair caller makes only
// calls that are right, by its own book of handles and names; each must
// succeed. A hostile one uses handles that were freed, of other kinds or made
// up, null where it must not be, and hostile records.
class RandomCaller {
 public:
  enum class Manner { kFair, kHostile };
  // The last one is a binary that a call takes, or a tensor that it creates.
  enum Kind { kNone, kBackend, kDevice, kContext, kGraph, kProfile, kData };

  struct Object {
    Kind kind = kNone;
    void* handle = nullptr;
    // What a graph was made in: its context or another graph.
    Object* owner = nullptr;
    bool isFreed = false;
    // Of the tensors in it.
    std::vector<std::uint32_t> ids = {};
    std::set<std::string> graphNames = {};
  };

  // Made with an object of a kind and its handle, or with none.
  struct Call {
    Kind with;
    Kind creates;
    const char* name;
    Kiv_ErrorHandle_t (*make)(RandomCaller& caller, Object* object,
                              void* handle);
    bool frees = false;
  };

  RandomCaller(const KivInterface_Implementation_t& api, Source& source,
               Manner manner)
      : api_(api),
        source_(source),
        hostile_(manner == Manner::kHostile),
        records_(source, hostile_) {}

  // A fair caller can make these.
  static std::span<const Call> fairCalls();
  // Makes one call, or the one that creates what another needs.
  void step();
  // The calls that failed.
  const std::vector<std::string>& failures() const { return failures_; }

 private:
  static std::span<const Call> hostileCalls();
  void make(const Call& call);

  // An object that is there, or was if the caller is hostile; null if none is.
  Object* pick(Kind kind);
  // The object's handle, or whatever a hostile caller takes for one.
  void* handleOf(const Object* object);
  void* optional(Kind kind);
  // Null where that is wrong.
  template <typename Pointer>
  Pointer* orNull(Pointer* pointer) {
    return hostile_ && source_.oneIn(16) ? nullptr : pointer;
  }
  // Room for a result of the type that is asked for; null where that is right.
  struct Room {
    RandomCaller& caller;
    template <typename Result>
    operator Result*() const {
      if (caller.source_.oneIn(4)) return nullptr;
      return caller.records_.keep(Result{});
    }
  };
  Room wanted() { return {*this}; }
  // A list of one record that has but its first word.
  template <typename Record>
  Record** words() {
    std::uint32_t* word = records_.keep(records_.border());
    return orNull(records_.keep(orNull(reinterpret_cast<Record*>(word))));
  }
  const void* binary() { return orNull(binary_.data()); }
  void** newHandle() { return orNull(&created_); }
  Kiv_Tensor_t* newTensor() { return orNull(&tensor_); }
  // One of the names that there are, or another; a fair caller's new ones are
  // new in the owner's context.
  const char* graphName(Object* owner, bool isNew);

  const KivInterface_Implementation_t& api_;
  Source& source_;
  const bool hostile_;
  RandomRecords records_;
  std::deque<Object> objects_;
  std::vector<std::string> names_;
  std::vector<std::string> failures_;
  // What the call at hand takes and creates.
  std::span<const std::uint8_t> binary_;
  void* created_ = nullptr;
  Kiv_Tensor_t tensor_{};
};

}  // namespace kiv::test
