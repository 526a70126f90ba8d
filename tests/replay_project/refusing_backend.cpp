// A backend that prints the name of each call and does nothing. The call that
// KIV_REFUSE names fails with KIV_REFUSE_STATUS; KIV_LACK=providers leaves the
// list of providers empty, KIV_LACK=graphFinalize leaves that function out.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "KivInterface.h"

namespace {

int object;
uint32_t nextTensorId = 1;

bool lacks(const char* name) {
  const char* lacked = std::getenv("KIV_LACK");
  return lacked != nullptr && std::strcmp(lacked, name) == 0;
}

Kiv_ErrorHandle_t statusOf(const char* name) {
  const char* refused = std::getenv("KIV_REFUSE");
  const char* status = std::getenv("KIV_REFUSE_STATUS");
  if (refused == nullptr || status == nullptr) return KIV_SUCCESS;
  if (std::strcmp(refused, name) != 0) return KIV_SUCCESS;
  return std::strtoul(status, nullptr, 10);
}

Kiv_ErrorHandle_t answer(const char* name) {
  std::puts(name);
  return statusOf(name);
}

Kiv_ErrorHandle_t create(const char* name, void** handle) {
  *handle = &object;
  return answer(name);
}

KivInterface_t provider() {
  KivInterface_t made{};
  made.apiVersion.coreApiVersion.majorVersion = KIV_CORE_API_VERSION_MAJOR;
  auto& api = made.KIV_INTERFACE_VER_NAME;
  api.logCreate = [](auto, auto, auto* out) {
    return create("logCreate", out);
  };
  api.logFree = [](auto) { return answer("logFree"); };
  api.backendCreate = [](auto, auto, auto* out) {
    return create("backendCreate", out);
  };
  api.backendFree = [](auto) { return answer("backendFree"); };
  api.contextCreate = [](auto, auto, auto, auto* out) {
    return create("contextCreate", out);
  };
  // A recorder's answers: there is no binary.
  api.contextGetBinarySize = [](auto, auto*) -> Kiv_ErrorHandle_t {
    return KIV_BACKEND_ERROR_NOTHING_TO_REPORT;
  };
  api.contextGetBinary = [](auto, auto*, auto, auto*) -> Kiv_ErrorHandle_t {
    return KIV_BACKEND_ERROR_NOTHING_TO_REPORT;
  };
  api.contextFree = [](auto, auto) { return answer("contextFree"); };
  api.graphCreate = [](auto, auto, auto, auto* out) {
    return create("graphCreate", out);
  };
  api.tensorCreateGraphTensor = [](auto, Kiv_Tensor_t* tensor) {
    tensor->v1.id = nextTensorId++;
    return answer("tensorCreateGraphTensor");
  };
  api.graphAddNode = [](auto, auto) { return answer("graphAddNode"); };
  api.graphFinalize = [](auto, auto, auto) { return answer("graphFinalize"); };
  api.graphExecute = [](auto, auto, auto, auto, auto, auto, auto) {
    return answer("graphExecute");
  };
  if (lacks("graphFinalize")) api.graphFinalize = nullptr;
  return made;
}

}  // namespace

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  static const KivInterface_t only = provider();
  static const KivInterface_t* list[] = {&only};
  *providerList = list;
  *numProviders = lacks("providers") ? 0 : 1;
  return statusOf("getProviders");
}
