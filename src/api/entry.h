#pragma once

#include <memory>
#include <new>

#include "KivCommon.h"
#include "diagnostics/failure.h"
#include "platform/process.h"
#include "session/session.h"

namespace kiv::api {

// The shapes that entry functions are made of. An entry reads from top to
// bottom in the order of its checks; one above enter() is made before the
// session starts, one inside after it.

constexpr Kiv_ErrorHandle_t toCode(Status status) {
  return static_cast<Kiv_ErrorHandle_t>(status);
}

inline constexpr Failure kNoMemory = {
    Status::kOutOfMemory, "There is not enough memory to record the call"};

// Runs `body`, and turns what it throws into a status: no exception crosses the
// API. Nothing but a lack of memory is thrown.
template <typename Body>
Kiv_ErrorHandle_t withoutExceptions(Body&& body) noexcept {
  const platform::CancellationDelay delay;
  try {
    return toCode(body());
  } catch (...) {
    return toCode(fail(kNoMemory));
  }
}

// Starts the session if need be and runs `body` with it.
template <typename Body>
Kiv_ErrorHandle_t enter(Body&& body) noexcept {
  return withoutExceptions([&] {
    const session::SessionUse use;
    if (use.get() == nullptr || !ok(use.get()->ensureStarted()))
      return Status::kNotStarted;
    return body(*use.get());
  });
}

// An object looked up for a handle, held for the whole call, or why there is
// none.
template <typename Object>
struct Found {
  std::shared_ptr<Object> object;
  Status status = Status::kOk;

  explicit operator bool() const { return object != nullptr; }
  Object& operator*() const { return *object; }
  Object* operator->() const { return object.get(); }
};

template <typename Object>
Found<Object> lookUp(const session::Registry<Object>& registry, void* handle,
                     const Failure& ifNull, const Failure& ifUnknown) {
  if (handle == nullptr) return {nullptr, fail(ifNull)};
  auto object = registry.find(session::fromApi(handle));
  if (object == nullptr) return {nullptr, fail(ifUnknown)};
  return {std::move(object)};
}

// What differs between the creations of contexts, devices and profiles.
struct CreationFailures {
  Failure outIsNull;
  Failure notCreated;
};

// Creates an object, records its creation with `record` and hands out its
// handle if that succeeded. The out-pointer holds 0 until then. An object whose
// recording failed stays registered, unknown to the client.
template <typename Object, typename Record>
Status create(session::Session& session, session::Registry<Object>& registry,
              session::Handle (session::Session::*makeObject)() noexcept,
              void** out, const CreationFailures& failures, Record&& record) {
  if (out == nullptr) return fail(failures.outIsNull);
  *out = nullptr;
  const session::Handle handle = (session.*makeObject)();
  const auto object = registry.find(handle);
  if (object == nullptr) return fail(failures.notCreated);
  try {
    const Status status = record(*object);
    if (ok(status)) *out = session::toApi(handle);
    return status;
  } catch (const std::bad_alloc&) {
    return fail(failures.notCreated);
  }
}

}  // namespace kiv::api
