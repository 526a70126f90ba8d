#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

// The logger is never used; a recording does not hold its calls either, so
// they are shown on request only.
template <typename Describe>
Kiv_ErrorHandle_t tracedOnRequest(std::string_view function,
                                  Describe describe) noexcept {
  return traced(function, [&](Call& call) {
    call.showOnlyIf(call.tracer().settings.showsLogCalls);
    describe(call);
  });
}

Kiv_ErrorHandle_t logCreate(KivLog_Callback_t callback, KivLog_Level_t level,
                            Kiv_LogHandle_t* logger) noexcept {
  return tracedOnRequest("logCreate", [&](Call& call) {
    call.value(Opaque{callback != nullptr}).value(level);
    call.create(Kind::kLog, logger);
  });
}

Kiv_ErrorHandle_t logSetLogLevel(Kiv_LogHandle_t logger,
                                 KivLog_Level_t level) noexcept {
  return tracedOnRequest("logSetLogLevel", [&](Call& call) {
    call.handle(Kind::kLog, logger).value(level);
  });
}

Kiv_ErrorHandle_t logFree(Kiv_LogHandle_t logger) noexcept {
  return tracedOnRequest("logFree",
                         [&](Call& call) { call.handle(Kind::kLog, logger); });
}

}  // namespace

void addLogEntries(KivInterface_Implementation_t& table) {
  table.logCreate = logCreate;
  table.logSetLogLevel = logSetLogLevel;
  table.logFree = logFree;
}

}  // namespace kiv::tracer
