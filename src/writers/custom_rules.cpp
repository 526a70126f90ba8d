#include "writers/custom_rules.h"

#include "KivInterface.h"

namespace kiv::writers {
namespace {

// Messages. The entry points that they name are not always the one called:
// users know the texts, so they stay.
constexpr const char* kNoBackendId =
    "Custom config provided without specifying backend ID, provide a backend "
    "ID via KivSaver_Initialize() to record custom configs.";
constexpr const char* kSaver =
    "Saver backend ID was provided and a custom config was passed to "
    "KivBackend_Initialize(). Saver does not support custom configs.";
constexpr const char* kCpu =
    "CPU backend ID was provided and a custom config was passed to "
    "KivBackend_Initialize(). CPU does not support custom configs.";
constexpr const char* kGpu =
    "GPU backend ID was provided and a custom config was passed to "
    "KivBackend_Initialize(). GPU does not support Backend custom configs.";
constexpr const char* kContext =
    "Custom context config parsing not supported for chosen backend ID";
constexpr const char* kDevice =
    "Custom device config parsing not supported for chosen backend ID";
constexpr const char* kProfile =
    "Custom profile config parsing not supported for backend ID %ld";
constexpr const char* kUnknownId = "Unknown backend ID provided: %ld";
constexpr const char* kUnsupportedId =
    "Unknown or unsupported backend ID provided: %ld";

// No message: the config is written.
constexpr const char* kWritten = nullptr;

struct Row {
  Status status;
  // Columns: Saver, CPU, GPU, any other backend.
  const char* messages[4];
};

// A row for each ConfigFamilyId. Without a backend id every family skips the
// record.
constexpr Row kRows[] = {
    {Status::kBackendInvalidArgument, {kSaver, kCpu, kGpu, kUnknownId}},
    {Status::kContextInvalidArgument, {kContext, kContext, kWritten, kContext}},
    {Status::kNotSupported, {kDevice, kDevice, kDevice, kDevice}},
    {Status::kGraphInvalidArgument, {kSaver, kCpu, kWritten, kUnsupportedId}},
    {Status::kInvalidArgument, {kSaver, kProfile, kProfile, kProfile}},
};

std::size_t columnOf(std::uint32_t backendId) {
  switch (backendId) {
    case KIV_BACKEND_ID_SAVER:
      return 0;
    case KIV_BACKEND_ID_CPU:
      return 1;
    case KIV_BACKEND_ID_GPU:
      return 2;
    default:
      return 3;
  }
}

bool namesBackendId(const char* message) {
  return message == kProfile || message == kUnknownId ||
         message == kUnsupportedId;
}

}  // namespace

bool mayWriteCustomConfig(CallText& call, format::ConfigFamilyId family) {
  const std::uint32_t backendId = call.backendId();
  if (backendId == KIV_BACKEND_ID_UNSET) {
    call.warn(kNoBackendId);
    return false;
  }
  const Row& row = kRows[static_cast<std::size_t>(family)];
  const char* message = row.messages[columnOf(backendId)];
  if (message == kWritten) return true;
  if (namesBackendId(message)) {
    call.fail({row.status, message}, static_cast<long>(backendId));
  } else {
    call.fail({row.status, message});
  }
  return false;
}

}  // namespace kiv::writers
