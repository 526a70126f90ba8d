#pragma once

#include <cstdint>

namespace kiv {

// What a call comes to: the API's codes by name.
enum class [[nodiscard]] Status : std::uint32_t{
    kOk = 0,
    kNotSupported = 1000,
    kOutOfMemory = 1002,
    kInvalidArgument = 1004,
    kPropertyError = 1999,
    kNotStarted = 4000,
    kBackendInvalidArgument = 4004,
    kBackendUnknown = 4011,
    kNothingToReport = 4950,
    kOptionTiming = 4951,
    kBackendError = 4999,
    kContextInvalidArgument = 5000,
    kContextUnknown = 5002,
    kContextBinary = 5005,
    kContextError = 5999,
    kGraphInvalidArgument = 6000,
    kGraphUnknown = 6001,
    kGraphNameTaken = 6003,
    kGraphInvalidTensor = 6004,
    kTensorAlreadyExists = 7003,
    kTensorInvalidArgument = 7004,
    kTensorNameCollision = 7006,
    kTensorDataType = 7999,
    kLoggerMissing = 11002,
    kLogLevelInvalid = 11003,
    kLogError = 11999,
    kProfileUnknown = 12000,
    kProfileError = 12999,
    kDeviceUnknown = 14000,
    kDeviceError = 14999,
};

constexpr bool ok(Status status) { return status == Status::kOk; }

}  // namespace kiv
