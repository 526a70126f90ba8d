#pragma once

#include <string_view>
#include <type_traits>

#include "KivCommon.h"
#include "line_writer.h"
#include "records.h"
#include "tracer.h"

namespace kiv::tracer {

// The line of one call, made on the call's thread from its arguments in the
// interface's order:
//
//   return traced("profileCreate", [&](Call& call) {
//     call.handle(Kind::kBackend, backend)
//         .value(level)
//         .create(Kind::kProfile, profile);
//   });
//
// prints "profileCreate(backend#0, 1, out) -> profile#0".
class Call {
 public:
  Call(Tracer& tracer, std::string_view function);

  Call& handle(Kind kind, const void* handle);
  // The logger's handle, which shows as "log" whatever it is.
  Call& log();
  template <typename Value>
  Call& value(const Value& value) {
    print(line_, value);
    return *this;
  }

  // An argument that receives something: "out" or "null".
  Call& out(const void* target);
  // The same, storing a value that needs no mention.
  template <typename Value>
  Call& store(Value* target, const std::type_identity_t<Value>& value) {
    if (target != nullptr) *target = value;
    return out(target);
  }
  // The same, storing a value that becomes the line's result.
  template <typename Value>
  Call& give(Value* target, const std::type_identity_t<Value>& value) {
    if (target != nullptr) print(result_, value);
    return store(target, value);
  }
  // The same with a new handle; none is made for a null target.
  Call& create(Kind kind, void** target);
  // The same with a handle that exists already.
  Call& giveHandle(Kind kind, void** target, void* handle);

  // The arguments, and the text behind the arrow, for calls that the functions
  // above do not cover.
  LineWriter& line() { return line_; }
  LineWriter& result() { return result_; }
  Tracer& tracer() { return tracer_; }

  // Keeps the line out of the trace unless `isShown`.
  void showOnlyIf(bool isShown) { isShown_ = isShown; }
  // Ends the line and sends it to the output.
  void finish();

 private:
  Tracer& tracer_;
  LineWriter line_;
  LineWriter result_;
  bool isShown_ = true;
};

// Runs `describe`, which names the arguments of a call and carries it out, then
// prints the line. Every call succeeds.
template <typename Describe>
Kiv_ErrorHandle_t traced(std::string_view function,
                         Describe describe) noexcept {
  try {
    Call call(Tracer::instance(), function);
    describe(call);
    call.finish();
    return KIV_SUCCESS;
  } catch (...) {
    return KIV_COMMON_ERROR_MEM_ALLOC;
  }
}

}  // namespace kiv::tracer
