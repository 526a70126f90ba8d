#include "session/session.h"

#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "diagnostics/spin_lock.h"
#include "platform/process.h"

namespace kiv::session {
namespace {

// Whoever begins a call raises the count and then looks whether the session has
// ended; the end is told first and then waits for the count. So either the call
// sees the end or the end sees the call.
constinit std::atomic<bool> hasEnded = false;
constinit std::atomic<std::uint32_t> callsUnderWay = 0;
// Those of this thread: a client's log callback may exit the process.
std::uint32_t callsOfThisThread() { return platform::threadNumber(); }

bool waitForOtherCalls() {
  constexpr auto kStep = std::chrono::milliseconds(1);
  constexpr int kMostSteps = 5000;
  for (int i = 0; i < kMostSteps; ++i) {
    if (callsUnderWay == callsOfThisThread()) return true;
    if (platform::isLastThreadOfProcess()) return false;
    std::this_thread::sleep_for(kStep);
  }
  return false;
}

// The session in storage that outlives it. Its memory is left as it is when it
// is still in use at the end, by a thread that hangs or was killed; all of it
// is in a forked child, whose files are its parent's.
class Holder {
 public:
  Holder() : owner_(platform::forkCount()), session_(new Session) {}
  ~Holder() {
    hasEnded = true;
    if (session() == nullptr) return;
    if (waitForOtherCalls()) {
      delete session_;
    } else {
      session_->files().endBesideCalls();
    }
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  // Null in a process that was forked when the files were open. Before that,
  // the child has a session of its own: a client may set options and then go
  // into the background.
  Session* session() const {
    const std::uint32_t caller = platform::forkCount();
    if (caller != owner_ && session_->files().started()) return nullptr;
    owner_ = caller;
    return session_;
  }

 private:
  mutable std::atomic<std::uint32_t> owner_;
  Session* const session_;
};

constinit std::atomic<Holder*> theHolder = nullptr;
constinit log::SpinLock making;

// Made on first use, and ended as a local static variable would be, which
// itself would leave something behind in a Windows process, see
// platform::threadNumber().
Holder& holder() {
  if (Holder* made = theHolder) return *made;
  const std::lock_guard lock(making);
  if (theHolder == nullptr) {
    auto made = std::make_unique<Holder>();
    if (!platform::callAtEnd([] { delete theHolder.load(); }))
      throw std::bad_alloc();
    theHolder = made.release();
  }
  return *theHolder;
}

}  // namespace

// A call that comes too late is not counted, or threads that go on calling
// would keep the end waiting.
SessionUse::SessionUse() {
  if (hasEnded) return;
  isCounted_ = true;
  platform::setThreadNumber(callsOfThisThread() + 1);
  ++callsUnderWay;
  try {
    if (!hasEnded) session_ = holder().session();
  } catch (...) {
    leave();
    throw;
  }
}

SessionUse::~SessionUse() {
  if (isCounted_) leave();
}

void SessionUse::leave() {
  --callsUnderWay;
  platform::setThreadNumber(callsOfThisThread() - 1);
}

template <typename Object>
Handle Session::newObject(Registry<Object>& registry, std::string_view prefix,
                          Family family) {
  return registry.add(
      std::make_shared<Object>(names_.unique(prefix, family), program()));
}

Handle Session::newContext() {
  return newObject(contexts_, "context", Family::kTensorOwner);
}

Handle Session::newDevice() {
  return newObject(devices_, "device", Family::kPlain);
}

Handle Session::newProfile() {
  return newObject(profiles_, "profile", Family::kPlain);
}

std::shared_ptr<SaverContext> Session::contextOfGraph(Handle handle) const {
  const Handle context = graphs_.contextOf(handle);
  return context == 0 ? nullptr : contexts_.find(context);
}

std::shared_ptr<SaverGraph> Session::findGraph(Handle handle) const {
  const auto context = contextOfGraph(handle);
  return context == nullptr ? nullptr : context->findGraph(handle);
}

Handle Session::registerGraph(SaverContext& context, const std::string& name,
                              std::shared_ptr<SaverGraph> graph) {
  const Handle handle = handleOf(graph.get());
  context.addGraph(name, std::move(graph));
  graphs_.add(handle, handleOf(&context));
  return handle;
}

bool Session::eraseContext(Handle handle) {
  const auto context = contexts_.find(handle);
  if (context == nullptr || !contexts_.erase(handle)) return false;
  graphs_.erase(context->graphHandles());
  return true;
}

}  // namespace kiv::session
