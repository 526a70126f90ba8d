#include "entry.h"

#include <new>

#include "log.h"

namespace kiv::ort {

Kiv_ErrorHandle_t reportFailure(const char* function,
                                Kiv_Status_t otherwise) noexcept {
  const std::string prefix = std::string(function) + ": ";
  try {
    throw;
  } catch (const Failure& failure) {
    log(KIV_LOG_LEVEL_ERROR, prefix + failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    log(KIV_LOG_LEVEL_ERROR, prefix + "out of memory");
    return KIV_COMMON_ERROR_MEM_ALLOC;
  } catch (const std::exception& error) {
    log(KIV_LOG_LEVEL_ERROR, prefix + error.what());
    return otherwise;
  } catch (...) {
    log(KIV_LOG_LEVEL_ERROR, prefix + "a failure without a message");
    return otherwise;
  }
}

}  // namespace kiv::ort
