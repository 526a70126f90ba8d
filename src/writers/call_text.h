#pragma once

#include <cstdint>
#include <string>

#include "diagnostics/messages.h"
#include "format/enum_value.h"
#include "output/code_stream.h"
#include "session/session.h"

namespace kiv::writers {

using format::Family;
using output::Name;
using output::NameOf;

// One recorded call on its way into the text: its statements, the names that it
// may make, its messages, and whether anything has failed.
//
//   const Name array = call.code().name(tensor, format::Part::kDims);
//   call.code().emitNumberArray("uint32_t", array, v1.dimensions, v1.rank);
//   if (v1.memType != 0) call.fail(kMemHandle);
//
// The first failure sticks: what is written behind it is dropped, no more names
// are made, and further failures say nothing. Writers follow no pointer of a
// record that a check has refused. One thread at a time.
class CallText {
 public:
  explicit CallText(session::Session& session)
      : session_(session),
        code_(session.codeStreams().lend()),
        backendId_(session.files().backendId()),
        programNumber_(session.programNumber()) {}
  CallText(const CallText&) = delete;
  CallText& operator=(const CallText&) = delete;

  output::CodeStream& code() { return *code_; }

  // base + "_" + a counter; empty once something has failed.
  template <Family kFamily = Family::kPlain>
  NameOf<kFamily> unique(std::string_view base) {
    if (hasFailed()) return {};
    return {session_.names().unique(
        base, kFamily,
        [this](std::string_view name) { return code_->copied(name); })};
  }

  // The name of a variable that an earlier call declared.
  Name use(const session::Variable& variable);

  // The id of the tensor that the client knows by `id`, "g_tensor_0.v1.id" for
  // the member "v1"; empty when no tensor of the registry has it.
  Name tensorId(const session::TensorRegistry& created, std::uint32_t id,
                std::string_view member);

  void fail(const Failure& failure, MessageArgument argument = {}) {
    if (!hasFailed()) status_ = messages_.fail(failure, std::move(argument));
  }
  // A further message of the failure that comes next.
  void error(const char* format, MessageArgument argument = {}) {
    if (!hasFailed()) messages_.add(Message{format, std::move(argument)});
  }
  void warn(const char* format, MessageArgument argument = {}) {
    messages_.warn(format, std::move(argument));
  }

  bool hasFailed() const { return !ok(status_); }
  Status status() const { return status_; }
  // The backend that the recording is meant for; 0 when unknown.
  std::uint32_t backendId() const { return backendId_; }

 protected:
  session::Session& session() { return session_; }
  // Writes the text, unless something has failed, and sends the messages.
  Status write(const output::WriteFailures& failures);

 private:
  void warnOfForeignVariable(std::string_view name);
  void warnOfUnsafeTexts();

  session::Session& session_;
  // Sent at the end of the call, when no lock is held.
  Messages messages_;
  const session::CodeStreams::Lease code_;
  const std::uint32_t backendId_;
  // Which of the session's programs this call goes to.
  const std::uint32_t programNumber_;
  Status status_ = Status::kOk;
};

}  // namespace kiv::writers
