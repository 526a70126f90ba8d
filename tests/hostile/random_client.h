#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "hostile/random_records.h"

namespace kiv::test {

// A client whose calls are made of what a source of bytes tells. A fair one
// makes only calls that are right, by its own book of handles and names; each
// must succeed. A hostile one uses handles that were freed, of other kinds or
// made up, null where it must not be, and hostile records.
class RandomClient {
 public:
  enum class Manner { kFair, kHostile };

  RandomClient(const KivInterface_Implementation_t& api, Source& source,
               Manner manner);

  // Makes calls until the source is empty.
  void run();
  // Makes one call, or none where a fair one is not possible.
  void step();
  // The calls that failed.
  const std::vector<std::string>& failures() const { return failures_; }

 private:
  enum Kind { kBackend, kDevice, kContext, kGraph, kProfile, kKinds };

  struct Object {
    void* handle = nullptr;
    bool isFreed = false;
    // The context of a graph, and where its tensors are looked up next.
    const Object* context = nullptr;
    const Object* outer = nullptr;
    std::vector<std::uint32_t> ids;
    std::set<std::string> graphNames;
  };

  // An object that is there; null when there is none.
  Object* pick(Kind kind);
  // The object's handle, or whatever a hostile client takes for one.
  void* handleOf(const Object* object, Kind kind);
  void* optional(Kind kind);
  template <typename Out>
  Out* orNull(Out* out) {
    return hostile_ && source_.oneIn(16) ? nullptr : out;
  }
  template <typename Out>
  Out* wanted(Out* out) {
    return source_.oneIn(4) ? nullptr : out;
  }
  Object* add(Kind kind, void* handle);
  void release(Object* object, Kind kind);
  static std::vector<std::uint32_t> idsOf(const Object* object);

  bool note(const char* function, Kiv_ErrorHandle_t code);
  void backendCalls();
  void deviceCalls();
  void profileCalls();
  void eventCalls();
  void contextCreation();
  void contextCalls();
  void graphCreation();
  void graphCalls();
  void execution();
  void tensorCreation();
  void otherCalls();

  const KivInterface_Implementation_t& api_;
  Source& source_;
  const bool hostile_;
  RandomRecords records_;
  std::array<std::vector<Object*>, kKinds> objects_;
  std::vector<std::unique_ptr<Object>> memory_;
  std::vector<const char*> names_;
  std::vector<std::string> failures_;
};

}  // namespace kiv::test
