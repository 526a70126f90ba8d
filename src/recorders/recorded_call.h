#pragma once

#include <initializer_list>
#include <string_view>

#include "format/calls.h"
#include "writers/call_text.h"

namespace kiv::recorders {

using format::Family;
using output::Argument;
using output::Name;
using output::NameOf;

// One recorded API call. Statements, bytes and messages are collected here;
// commit() appends all of it to the output files, or nothing.
//
//   RecordedCall call(session, format::calls::kGraphFinalize);
//   const Name profile = call.profile(profileHandle);
//   return call.commit({call.use(graph), profile, Name{}}, kWriteFailures);
//
// One thread at a time.
class RecordedCall : public writers::CallText {
 public:
  RecordedCall(session::Session& session, const format::Function& function)
      : CallText(session), function_(function) {}

  // The variable of an object that an earlier call declared; empty, and so
  // NULL, for a null handle. An unknown handle is a failure.
  Name backend(Kiv_BackendHandle_t handle);
  Name device(Kiv_DeviceHandle_t handle);
  Name profile(Kiv_ProfileHandle_t handle);

  // The variable of an object at hand.
  using CallText::use;
  NameOf<Family::kContext> use(const session::SaverContext& context) {
    return {use(context.variable())};
  }
  NameOf<Family::kGraph> use(const session::SaverGraph& graph) {
    return {use(graph.variable())};
  }
  Name use(const session::NamedObject& object) {
    return use(object.variable());
  }

  // Declares a variable for a result, called base + a counter, and returns its
  // address; NULL when the client wants no result.
  Argument out(const void* target, std::string_view type,
               std::string_view base);

  // Declares a variable and returns its address.
  Argument declare(std::string_view type, Name name);

  // Writes the call itself. Statements behind it may follow.
  void call(std::initializer_list<Argument> arguments);

  // Ends the call's text with a blank line and writes it.
  Status commit(const output::WriteFailures& failures) {
    return write(failures);
  }

  // call() and commit().
  Status commit(std::initializer_list<Argument> arguments,
                const output::WriteFailures& failures);

 private:
  template <typename Object>
  Name find(const session::Registry<Object>& registry, void* handle,
            const Failure& ifUnknown);

  const format::Function& function_;
};

}  // namespace kiv::recorders
