#pragma once

#include "answers.h"
#include "handle_table.h"
#include "kept_outputs.h"
#include "real_backend.h"

namespace kiv::relay {

// All state of the library. There is one Relay from the first successful
// KivInterface_getProviders until the library is unloaded; it stays at the
// process's end, when clients may still call. Its parts may be used from any
// thread.
class Relay {
 public:
  // Null until it is made.
  static Relay* instance();
  // Makes it unless there is one. Nothing, with the reason in `why`, when the
  // real backend cannot be had.
  static Relay* make(std::string& why);

  explicit Relay(RealBackend backend);

  RealBackend real;
  HandleTable<Object> backends;
  HandleTable<Object> devices;
  HandleTable<Object> profiles;
  HandleTable<Object> contexts;
  HandleTable<Graph> graphs;
  KeptOutputs outputs;
  Answers answers;
};

// The real backend's functions. For entries, which clients have from a Relay.
inline const KivInterface_Implementation_t& real() {
  return Relay::instance()->real.table();
}

}  // namespace kiv::relay
