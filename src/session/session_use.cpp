#include <chrono>
#include <mutex>
#include <new>
#include <thread>

#include "diagnostics/spin_lock.h"
#include "platform/process.h"
#include "session/session.h"

// The one session's life: when it is made, who may use it, how it ends.
namespace kiv::session {
namespace {

// The calls under way, in a list that needs no memory of its own.
class CallList {
 public:
  void add(CallUnderWay& call) {
    call.thread = platform::threadId();
    const std::lock_guard lock(lock_);
    call.next = first_;
    if (first_ != nullptr) first_->previous = &call;
    first_ = &call;
  }

  void remove(CallUnderWay& call) {
    const std::lock_guard lock(lock_);
    (call.previous == nullptr ? first_ : call.previous->next) = call.next;
    if (call.next != nullptr) call.next->previous = call.previous;
  }

  // A client's log callback may exit the process, so that this thread's own
  // call is under way while the session ends.
  bool hasOthers() {
    const std::uint64_t self = platform::threadId();
    const std::lock_guard lock(lock_);
    for (const CallUnderWay* call = first_; call != nullptr; call = call->next)
      if (call->thread != self) return true;
    return false;
  }

 private:
  log::SpinLock lock_;
  CallUnderWay* first_ = nullptr;
};

// A call enters the list and then looks whether the session has ended; the end
// sets the flag first and then waits for the list. So either the call sees the
// end or the end sees the call.
constinit std::atomic<bool> hasEnded = false;
constinit CallList calls;

bool waitForOtherCalls() {
  constexpr auto kStep = std::chrono::milliseconds(1);
  constexpr int kMostSteps = 5000;
  for (int i = 0; i < kMostSteps; ++i) {
    if (!calls.hasOthers()) return true;
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
  Holder() : ownerForks_(platform::forkCount()), session_(new Session) {}
  ~Holder() {
    hasEnded = true;
    if (session() == nullptr) return;
    if (waitForOtherCalls()) {
      delete session_;
    } else {
      session_->files().finishDespiteCalls();
    }
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  // Null in a process that was forked when the files were open. Before that,
  // the child has a session of its own: a client may set options and then go
  // into the background.
  Session* session() const {
    const std::uint32_t forks = platform::forkCount();
    if (forks != ownerForks_) {
      if (session_->started()) return nullptr;
      ownerForks_ = forks;
    }
    return session_;
  }

 private:
  mutable std::atomic<std::uint32_t> ownerForks_;
  Session* const session_;
};

constinit std::atomic<Holder*> theHolder = nullptr;
constinit log::SpinLock making;

// Made on first use, and ended as a local static variable would be, which
// itself would leave something behind in a Windows process, see
// platform::callAtEnd().
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

// A call that comes too late does not enter the list, or threads that go on
// calling would keep the end waiting.
SessionUse::SessionUse() {
  if (hasEnded) return;
  // A forked child must not wait for a lock that its parent's threads held.
  const Holder* const made = theHolder;
  Session* const session = made == nullptr ? nullptr : made->session();
  if (made != nullptr && session == nullptr) return;
  calls.add(call_);
  isUnderWay_ = true;
  try {
    if (!hasEnded) session_ = made == nullptr ? holder().session() : session;
  } catch (const std::bad_alloc&) {
    session_ = nullptr;
  }
}

SessionUse::~SessionUse() {
  if (isUnderWay_) calls.remove(call_);
}

}  // namespace kiv::session
