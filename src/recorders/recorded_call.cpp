#include "recorders/recorded_call.h"

#include <cassert>

namespace kiv::recorders {
namespace {

constexpr Failure kUnknownBackend = {
    Status::kBackendUnknown, "No backend associated with the provided handle"};
constexpr Failure kUnknownDevice = {
    Status::kDeviceUnknown, "No device associated with the provided handle"};
constexpr Failure kUnknownProfile = {
    Status::kProfileUnknown, "No profile associated with the provided handle"};

}  // namespace

// The object may be freed by another thread before the call is written, so the
// name is copied.
template <typename Object>
Name RecordedCall::find(const session::Registry<Object>& registry, void* handle,
                        const Failure& ifUnknown) {
  if (handle == nullptr) return {};
  const auto object = registry.find(session::fromApi(handle));
  if (object == nullptr) {
    fail(ifUnknown);
    return {};
  }
  return code().copied(use(*object).text);
}

Name RecordedCall::backend(Kiv_BackendHandle_t handle) {
  return find(session().backends(), handle, kUnknownBackend);
}

Name RecordedCall::device(Kiv_DeviceHandle_t handle) {
  return find(session().devices(), handle, kUnknownDevice);
}

Name RecordedCall::profile(Kiv_ProfileHandle_t handle) {
  return find(session().profiles(), handle, kUnknownProfile);
}

Argument RecordedCall::out(const void* target, std::string_view type,
                           std::string_view base) {
  if (target == nullptr) return Name{};
  return declare(type, unique(base));
}

Argument RecordedCall::declare(std::string_view type, Name name) {
  code().emitDeclaration(type, name);
  return Argument::address(name);
}

void RecordedCall::call(std::initializer_list<Argument> arguments) {
  assert(arguments.size() == function_.arguments.size());
  code().emitCall(format::kMacro, format::kErrorVariable,
                  format::kInterfaceVariable, function_.name, arguments);
}

Status RecordedCall::commit(std::initializer_list<Argument> arguments,
                            const output::WriteFailures& failures) {
  if (!hasFailed()) call(arguments);
  return write(failures);
}

}  // namespace kiv::recorders
