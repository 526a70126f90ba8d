#pragma once

// The library's logger, through which clients read why a call failed:
//
//   log(KIV_LOG_LEVEL_WARN, "graphFinalize: no opset is known");
//
// Without a logger errors go to standard error and other messages nowhere. Any
// thread may log. No lock is held while the client's callback runs.

#include <string>

#include "KivLog.h"

namespace kiv::ort {

void log(KivLog_Level_t level, const std::string& message) noexcept;

// The level up to which messages reach anybody.
KivLog_Level_t logLevel() noexcept;

// Each creation needs its own end; the last one ends the logger.
Kiv_LogHandle_t createLogger(KivLog_Callback_t callback, KivLog_Level_t level);

// Both return false without a logger.
bool setLogLevel(KivLog_Level_t level);
bool freeLogger();

}  // namespace kiv::ort
