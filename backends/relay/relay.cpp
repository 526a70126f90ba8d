#include "relay.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "format/frame.h"
#include "platform/library.h"

namespace kiv::relay {
namespace {

constinit std::atomic<Relay*> theRelay = nullptr;
std::mutex making;

void end() {
  Relay* const ended = theRelay.exchange(nullptr);
  const RealBackend real = ended->real;
  delete ended;
  real.unload();
}

// Custom configs of other backends cannot be recorded: without an id the
// recorder leaves them out, with one it would refuse the calls.
void suggestBackendId(std::uint32_t id) {
  const session::SessionUse use;
  if (use.get() != nullptr && !format::headersOfBackend(id).empty())
    use.get()->suggestBackendId(id);
}

}  // namespace

Relay::Relay(RealBackend backend)
    : real(std::move(backend)),
      answers(real.path(), real.provider(), outputs.isOn()) {}

Relay* Relay::instance() { return theRelay; }

Relay* Relay::make(std::string& why) {
  const std::lock_guard lock(making);
  if (Relay* const made = theRelay) return made;
  auto real = RealBackend::load(why);
  if (!real) return nullptr;
  theRelay = new Relay(*std::move(real));
  platform::callAtUnload(end);
  suggestBackendId(theRelay.load()->real.provider().backendId);
  return theRelay;
}

}  // namespace kiv::relay
