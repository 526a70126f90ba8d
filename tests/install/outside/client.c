/* A client that is linked with its backend. */
#include <KivInterface.h>

int main(void) {
  const KivInterface_t** providers = NULL;
  uint32_t count = 0;
  if (KivInterface_getProviders(&providers, &count) != KIV_SUCCESS) return 1;
  const KivInterface_Implementation_t* api =
      &providers[0]->KIV_INTERFACE_VER_NAME;
  Kiv_BackendHandle_t backend = NULL;
  Kiv_ContextHandle_t context = NULL;
  if (api->backendCreate(NULL, NULL, &backend) != KIV_SUCCESS) return 2;
  if (api->contextCreate(backend, NULL, NULL, &context) != KIV_SUCCESS)
    return 3;
  if (api->contextFree(context, NULL) != KIV_SUCCESS) return 4;
  return api->backendFree(backend) == KIV_SUCCESS ? 0 : 5;
}
