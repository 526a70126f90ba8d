#pragma once

#include <string>
#include <string_view>

#include "diagnostics/messages.h"
#include "output/code_stream.h"
#include "output/output_files.h"
#include "session/session.h"
#include "writers/write_scope.h"

namespace kiv::recorders {

// One recorded API call. Statements, bytes and messages are collected here;
// commit() appends all of it to the output files, or nothing.
//
//   RecordedCall call(session, "graphFinalize");
//   const std::string profile = call.profile(profileHandle);
//   return call.commit({call.use(graph.variable()), profile, "NULL"},
//                      kGraphWriteFailures);
//
// The first failure sticks: whatever follows it does nothing, and commit()
// returns it.
class RecordedCall {
 public:
  RecordedCall(session::Session& session, std::string_view function);

  // The argument text of an object that an earlier call declared: its variable,
  // or "NULL" for a null handle. An unknown handle is a failure.
  std::string backend(Kiv_BackendHandle_t handle);
  std::string device(Kiv_DeviceHandle_t handle);
  std::string profile(Kiv_ProfileHandle_t handle);
  std::string use(const session::Variable& variable) {
    return scope_.use(variable);
  }

  // Declares a variable for a result, called base + a counter, and returns its
  // address; "NULL" when the client wants no result.
  std::string out(const void* target, std::string_view type,
                  std::string_view base);

  // Declares a variable and returns its address.
  std::string declare(std::string_view type, std::string_view name);

  // Lets a value writer work, unless something has failed.
  template <typename Write>
  void write(Write&& writer) {
    if (ok(status_)) status_ = writer(scope_);
  }

  writers::WriteScope& scope() { return scope_; }
  output::CodeStream& code() { return code_; }
  session::Names& names() { return session_.names(); }
  Status status() const { return status_; }
  Status fail(const Failure& failure) {
    if (ok(status_)) status_ = scope_.fail(failure);
    return status_;
  }

  // Writes the call itself. Statements behind it may follow.
  void call(const output::Texts& arguments);

  // Ends the call's text with a blank line and writes it.
  Status commit(const output::WriteFailures& failures);

  // call() and commit().
  Status commit(const output::Texts& arguments,
                const output::WriteFailures& failures);

 private:
  template <typename Find>
  std::string argument(void* handle, const Failure& ifUnknown, Find&& find);

  session::Session& session_;
  std::string_view function_;
  Messages messages_;
  output::CodeStream code_;
  writers::WriteScope scope_;
  Status status_ = Status::kOk;
};

}  // namespace kiv::recorders
