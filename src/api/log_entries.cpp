#include "api/entries.h"
#include "api/entry.h"
#include "diagnostics/logger.h"
#include "format/enum_value.h"
#include "session/handles.h"

// The logger's entries start no session and record nothing. There is one
// logger, so handles are not examined.
namespace kiv::api {
namespace {

using log::Logger;

constexpr session::Handle kLogHandle = 1;

std::int32_t numberOf(const KivLog_Level_t& level) {
  return static_cast<std::int32_t>(format::enumValue(level));
}

Status setLevel(std::int32_t level) {
  if (!Logger::exists()) return Status::kLoggerMissing;
  if (!log::isValidLevel(level)) return Status::kLogLevelInvalid;
  return Logger::setLevel(level) ? Status::kOk : Status::kLogError;
}

}  // namespace

Code logCreate(KivLog_Callback_t callback, KivLog_Level_t level,
               Kiv_LogHandle_t* logger) {
  try {
    const Status status = Logger::create(callback, numberOf(level));
    if (ok(status) && logger != nullptr) *logger = session::toApi(kLogHandle);
    return toCode(status);
  } catch (...) {
    return toCode(Status::kLoggerMissing);
  }
}

Code logSetLogLevel(Kiv_LogHandle_t, KivLog_Level_t level) {
  return withoutExceptions([&] { return setLevel(numberOf(level)); });
}

Code logFree(Kiv_LogHandle_t) {
  return withoutExceptions([] { return Logger::free(); });
}

}  // namespace kiv::api
