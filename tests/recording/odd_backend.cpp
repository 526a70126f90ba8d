// A backend that will not do, in the way that the variable KIV_ODD names.

#include <cstdlib>
#include <cstring>

#include "KivInterface.h"

namespace {

KivInterface_t provider{};
const KivInterface_t* providers[] = {&provider};

bool is(const char* word) {
  const char* odd = std::getenv("KIV_ODD");
  return odd != nullptr && std::strcmp(odd, word) == 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) Kiv_ErrorHandle_t
KivInterface_getProviders(const KivInterface_t*** list, uint32_t* count) {
  if (is("refuses")) return KIV_BACKEND_ERROR_CANNOT_INITIALIZE;
  *list = providers;
  *count = is("lists nothing") ? 0 : 1;
  return KIV_SUCCESS;
}
