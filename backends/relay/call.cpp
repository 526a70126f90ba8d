#include "call.h"

namespace kiv::relay {
namespace {

constexpr Kiv_ErrorHandle_t kNotStarted = KIV_BACKEND_ERROR_CANNOT_INITIALIZE;

void reach(session::Session& session, Relay& relay,
           const Answers::Place& place) {
  if (relay.answers.reach(session, place) && relay.outputs.isOn())
    relay.outputs.begin(relay.answers.directory());
}

}  // namespace

// A tensor of a context is accepted even if its text could not be written.
void Call::finish(session::Session& session, Relay& relay) {
  if (isRecorded())
    reach(session, relay, place_);
  else if (code_ == KIV_SUCCESS)
    code_ = KIV_BACKEND_ERROR_GENERAL;
}

Kiv_ErrorHandle_t Call::answer(Kiv_ErrorHandle_t code) {
  const bool isAccepted = code == KIV_SUCCESS;
  const bool isPlain = isRecorded() == isAccepted;
  if (!isPlain && code_ != kNotStarted)
    whileRecording([&](session::Session& session, Relay& relay) {
      list(session, relay, code);
    });
  return code;
}

// A recording that cannot start has no place for a list.
void Call::list(session::Session& session, Relay& relay,
                Kiv_ErrorHandle_t code) {
  if (isRecorded()) return relay.answers.refused(place_, function_, code);
  if (!ok(session.ensureStarted())) return;
  reach(session, relay, {session.programNumber(), 0});
  relay.answers.notRecorded(function_, code_);
}

}  // namespace kiv::relay
