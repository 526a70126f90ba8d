#pragma once

#include <utility>

#include "KivInterface.h"
#include "output/call_watch.h"
#include "platform/process.h"
#include "relay.h"
#include "session/session.h"

namespace kiv::relay {

// Runs `body` with the session and the relay's tables. It is left out in a
// process that records nothing: in a forked child, whose parent's threads may
// have held locks, and once the session has ended.
template <typename Body>
bool whileRecording(Body&& body) noexcept {
  const platform::CancellationDelay delay;
  const session::SessionUse use;
  if (use.get() == nullptr) return true;
  try {
    body(*use.get(), *Relay::instance());
    return true;
  } catch (...) {
    return false;
  }
}

// One call of the client's, on its way to the recorder and then to the real
// backend. No lock is held while the latter is called.
//
//   Call call("graphFinalize");
//   call.record([&](Relay& relay) {
//     return api::graphFinalize(relay.graphs.recorded(graph), nullptr,
//     nullptr);
//   });
//   return call.answer(real().graphFinalize(graph, profile, signal));
//
// One thread at a time.
class Call {
 public:
  explicit Call(const char* function) : function_(function) {}
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // Has the recorder make the call; `body` returns its code.
  template <typename Body>
  void record(Body&& body) {
    const bool isDone =
        whileRecording([&](session::Session& session, Relay& relay) {
          const output::CallWatch watch;
          code_ = body(relay);
          place_ = {watch.program(), watch.number()};
          finish(session, relay);
        });
    if (!isDone) code_ = KIV_COMMON_ERROR_MEM_ALLOC;
  }

  // For a call that the recorder has no function for.
  void cannotBeRecorded() { code_ = KIV_COMMON_ERROR_NOT_SUPPORTED; }

  bool isRecorded() const { return place_.call != 0; }
  const Answers::Place& place() const { return place_; }

  // Changes tables when the real backend has answered. Without memory the
  // recorder does not know the object, and refuses later calls with it.
  template <typename Body>
  void note(Body&& body) {
    whileRecording([&](session::Session&, Relay& relay) { body(relay); });
  }

  // Lists what the real backend did not accept, and what it did and the
  // recorder did not. Returns the code.
  Kiv_ErrorHandle_t answer(Kiv_ErrorHandle_t code);

 private:
  void finish(session::Session& session, Relay& relay);
  void list(session::Session& session, Relay& relay, Kiv_ErrorHandle_t code);

  const char* function_;
  // The recorder's status.
  Kiv_ErrorHandle_t code_ = KIV_SUCCESS;
  Answers::Place place_;
};

}  // namespace kiv::relay
