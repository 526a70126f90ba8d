#include "entries.h"
#include "log.h"

namespace kiv::ort {
namespace {

bool isLevel(KivLog_Level_t level) {
  return level >= KIV_LOG_LEVEL_ERROR && level <= KIV_LOG_LEVEL_DEBUG;
}

Kiv_ErrorHandle_t logCreate(KivLog_Callback_t callback, KivLog_Level_t level,
                            Kiv_LogHandle_t* logger) noexcept {
  if (!isLevel(level)) return KIV_LOG_ERROR_INVALID_LEVEL;
  if (logger == nullptr) return KIV_LOG_ERROR_NOT_CREATED;
  *logger = createLogger(callback, level);
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t logSetLogLevel(Kiv_LogHandle_t,
                                 KivLog_Level_t level) noexcept {
  if (!isLevel(level)) return KIV_LOG_ERROR_INVALID_LEVEL;
  return setLogLevel(level) ? KIV_SUCCESS : KIV_LOG_ERROR_NOT_CREATED;
}

Kiv_ErrorHandle_t logFree(Kiv_LogHandle_t) noexcept {
  return freeLogger() ? KIV_SUCCESS : KIV_LOG_ERROR_NOT_CREATED;
}

}  // namespace

void addLogEntries(KivInterface_Implementation_t& table) {
  table.logCreate = logCreate;
  table.logSetLogLevel = logSetLogLevel;
  table.logFree = logFree;
}

}  // namespace kiv::ort
