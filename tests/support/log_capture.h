#pragma once

#include <string>
#include <vector>

#include "KivInterface.h"

namespace kiv::test {

// Collects a library's messages through the logger's callback, formatted, with
// their level in front: "1: Provided graph handle is NULL".
class LogCapture {
 public:
  explicit LogCapture(const KivInterface_Implementation_t& api,
                      KivLog_Level_t level = KIV_LOG_LEVEL_DEBUG);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The messages since the last call.
  std::vector<std::string> take();

 private:
  const KivInterface_Implementation_t& api_;
  Kiv_LogHandle_t handle_ = nullptr;
};

}  // namespace kiv::test
