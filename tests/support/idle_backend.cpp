// A backend that does nothing but hand out handles and ids, so that a replay on
// it costs what replaying itself costs.

#include "KivInterface.h"

namespace {

int object;
uint32_t nextTensorId = 1;

template <typename... Arguments>
Kiv_ErrorHandle_t nothing(Arguments...) {
  return KIV_SUCCESS;
}

template <typename... Arguments>
void setToNothing(Kiv_ErrorHandle_t (*&entry)(Arguments...)) {
  entry = nothing<Arguments...>;
}

Kiv_ErrorHandle_t create(void** handle) {
  *handle = &object;
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t addTensor(void*, Kiv_Tensor_t* tensor) {
  tensor->v1.id = nextTensorId++;
  return KIV_SUCCESS;
}

KivInterface_t provider() {
  KivInterface_t made{};
  made.apiVersion.coreApiVersion.majorVersion = KIV_CORE_API_VERSION_MAJOR;
  auto& api = made.KIV_INTERFACE_VER_NAME;
  api.logCreate = [](auto, auto, auto* out) { return create(out); };
  setToNothing(api.logFree);
  api.backendCreate = [](auto, auto, auto* out) { return create(out); };
  setToNothing(api.propertyHasCapability);
  setToNothing(api.backendFree);
  setToNothing(api.backendGetSupportedOperations);
  api.contextCreate = [](auto, auto, auto, auto* out) { return create(out); };
  setToNothing(api.contextFree);
  setToNothing(api.contextValidateBinary);
  api.graphCreate = [](auto, auto, auto, auto* out) { return create(out); };
  api.tensorCreateContextTensor = addTensor;
  api.tensorCreateGraphTensor = addTensor;
  setToNothing(api.graphAddNode);
  setToNothing(api.graphFinalize);
  setToNothing(api.graphExecute);
  return made;
}

}  // namespace

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  static const KivInterface_t only = provider();
  static const KivInterface_t* list[] = {&only};
  *providerList = list;
  *numProviders = 1;
  return KIV_SUCCESS;
}
