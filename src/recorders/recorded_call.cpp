#include "recorders/recorded_call.h"

namespace kiv::recorders {
namespace {

constexpr Failure kUnknownBackend = {
    Status::kBackendUnknown, "No backend associated with the provided handle"};
constexpr Failure kUnknownDevice = {
    Status::kDeviceUnknown, "No device associated with the provided handle"};
constexpr Failure kUnknownProfile = {
    Status::kProfileUnknown, "No profile associated with the provided handle"};

}  // namespace

RecordedCall::RecordedCall(session::Session& session, std::string_view function)
    : session_(session),
      function_(function),
      scope_{code_, session.names(), messages_, session.files().backendId(),
             session.program()} {}

// `find` gives the object of a handle, or null.
template <typename Find>
std::string RecordedCall::argument(void* handle, const Failure& ifUnknown,
                                   Find&& find) {
  if (handle == nullptr) return "NULL";
  const auto object = find(session::fromApi(handle));
  if (object == nullptr) {
    (void)fail(ifUnknown);
    return {};
  }
  return scope_.use(object->variable());
}

std::string RecordedCall::backend(Kiv_BackendHandle_t handle) {
  return argument(handle, kUnknownBackend, [this](session::Handle known) {
    return session_.backends().find(known);
  });
}

std::string RecordedCall::device(Kiv_DeviceHandle_t handle) {
  return argument(handle, kUnknownDevice, [this](session::Handle known) {
    return session_.devices().find(known);
  });
}

std::string RecordedCall::profile(Kiv_ProfileHandle_t handle) {
  return argument(handle, kUnknownProfile, [this](session::Handle known) {
    return session_.profiles().find(known);
  });
}

std::string RecordedCall::out(const void* target, std::string_view type,
                              std::string_view base) {
  if (target == nullptr) return "NULL";
  return declare(type, names().unique(base));
}

std::string RecordedCall::declare(std::string_view type,
                                  std::string_view name) {
  code_.emitDeclaration(type, name);
  return '&' + std::string(name);
}

void RecordedCall::call(const output::Texts& arguments) {
  code_.emitCall("VALIDATE", "error", "interface", function_, arguments);
}

Status RecordedCall::commit(const output::WriteFailures& failures) {
  messages_.send();
  if (!ok(status_)) return status_;
  status_ =
      session_.files().append(code_.runs(), code_.takeText(true), failures);
  return status_;
}

Status RecordedCall::commit(const output::Texts& arguments,
                            const output::WriteFailures& failures) {
  call(arguments);
  return commit(failures);
}

}  // namespace kiv::recorders
