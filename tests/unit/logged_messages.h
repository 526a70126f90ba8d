#pragma once

#include "diagnostics/logger.h"
#include "support/log_capture.h"

namespace kiv::test {

// The process's logger through the entries that LogCapture uses.
inline const KivInterface_Implementation_t& loggerEntries() {
  static const KivInterface_Implementation_t entries = [] {
    KivInterface_Implementation_t result{};
    result.logCreate = [](KivLog_Callback_t callback, KivLog_Level_t level,
                          Kiv_LogHandle_t*) {
      return static_cast<Kiv_ErrorHandle_t>(
          log::Logger::create(callback, static_cast<std::int32_t>(level)));
    };
    result.logFree = [](Kiv_LogHandle_t) {
      return static_cast<Kiv_ErrorHandle_t>(log::Logger::free());
    };
    return result;
  }();
  return entries;
}

// Collects what is logged while it lives, each with its level in front.
class LoggedMessages : public LogCapture {
 public:
  LoggedMessages() : LogCapture(loggerEntries()) {}
};

using Lines = std::vector<std::string>;

}  // namespace kiv::test
