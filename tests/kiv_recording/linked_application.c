// An application that is linked with its backend.

#include <stdio.h>

#include "KivInterface.h"

int main(void) {
  const KivInterface_t** providers = NULL;
  uint32_t count = 0;
  Kiv_BackendHandle_t handle = NULL;
  if (KivInterface_getProviders(&providers, &count) != KIV_SUCCESS) return 1;
  return providers[0]->KIV_INTERFACE_VER_NAME.backendCreate(
             NULL, NULL, &handle) == KIV_SUCCESS
             ? 0
             : 1;
}
