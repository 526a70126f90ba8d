#include "particular_backend.h"

#include <cstdarg>
#include <cstdlib>
#include <thread>

namespace kiv::test {
namespace {

ParticularBackend particular;
std::atomic<int> executionsUnderWay = 0;
std::atomic<std::uint32_t> nextTensorId = 9000;
KivLog_Callback_t logCallback = nullptr;
KivGraph_NotifyFn_t waitingNotify = nullptr;
void* waitingArgument = nullptr;

// Each new object has an old one's handle, of its kind.
char backendPlace;
char contextPlace;
char graphPlaces[2];

void logMessage(const char* format, ...) {
  if (logCallback == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logCallback(format, KIV_LOG_LEVEL_ERROR, 0, arguments);
  va_end(arguments);
}

Kiv_ErrorHandle_t give(void** handle, char& place) {
  *handle = &place;
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t createTensor(void*, Kiv_Tensor_t* tensor) {
  if (tensor == nullptr) return KIV_TENSOR_ERROR_INVALID_ARGUMENT;
  tensor->v1.id = nextTensorId--;
  return KIV_SUCCESS;
}

// Each output is twice the first input.
void compute(const Kiv_Tensor_t* inputs, Kiv_Tensor_t* outputs,
             std::uint32_t numOutputs) {
  const auto* const from = static_cast<const float*>(inputs->v1.clientBuf.data);
  for (std::uint32_t i = 0; i < numOutputs; ++i)
    *static_cast<float*>(outputs[i].v1.clientBuf.data) = 2 * *from;
}

Kiv_ErrorHandle_t execute(void*, const Kiv_Tensor_t* inputs, std::uint32_t,
                          Kiv_Tensor_t* outputs, std::uint32_t numOutputs,
                          void*, void*) {
  if (particular.isDeadly) std::_Exit(9);
  ++executionsUnderWay;
  while (executionsUnderWay < particular.executionsToMeet)
    std::this_thread::yield();
  compute(inputs, outputs, numOutputs);
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t executeAsync(void*, const Kiv_Tensor_t* inputs, std::uint32_t,
                               Kiv_Tensor_t* outputs, std::uint32_t numOutputs,
                               void*, void*, KivGraph_NotifyFn_t notify,
                               void* argument) {
  compute(inputs, outputs, numOutputs);
  waitingNotify = notify;
  waitingArgument = argument;
  return KIV_SUCCESS;
}

KivInterface_t makeProvider() {
  KivInterface_t made{};
  made.backendId = KIV_BACKEND_ID_GPU;
  made.providerName = "PARTICULAR \"one\"";
  made.apiVersion = {{KIV_CORE_API_VERSION_MAJOR, 3, 1}, {7, 8, 9}};
  auto& api = made.KIV_INTERFACE_VER_NAME;
  api.logCreate = [](KivLog_Callback_t callback, auto, auto) {
    logCallback = callback;
    return Kiv_ErrorHandle_t{KIV_SUCCESS};
  };
  api.backendCreate = [](auto, auto, auto* out) {
    logMessage("a backend is created");
    return give(out, backendPlace);
  };
  api.backendFree = [](auto) { return Kiv_ErrorHandle_t{KIV_SUCCESS}; };
  api.backendGetSupportedOperations = [](auto, uint32_t* count,
                                         const KivBackend_OperationName_t**) {
    *count = 42;
    return Kiv_ErrorHandle_t{KIV_SUCCESS};
  };
  api.contextCreate = [](auto, auto, auto, auto* out) {
    return give(out, contextPlace);
  };
  api.contextFree = [](auto, auto) { return Kiv_ErrorHandle_t{KIV_SUCCESS}; };
  api.graphCreate = [](auto, auto, auto, auto* out) {
    static int graphs = 0;
    return give(out, graphPlaces[graphs++ % 2]);
  };
  api.graphAddNode = [](auto, Kiv_OpConfig_t config) {
    particular.nodeInput = config.v1.inputTensors[0].v1.id;
    return Kiv_ErrorHandle_t{KIV_SUCCESS};
  };
  api.graphFinalize = [](auto, auto, auto) {
    return Kiv_ErrorHandle_t{particular.finalizeCode};
  };
  api.graphExecute = execute;
  api.graphExecuteAsync = executeAsync;
  api.tensorCreateContextTensor = createTensor;
  api.tensorCreateGraphTensor = createTensor;
  api.memRegister = [](auto, auto, auto, auto) {
    return Kiv_ErrorHandle_t{KIV_SUCCESS};
  };
  return made;
}

}  // namespace

extern "C" KIV_API ParticularBackend* particularBackend() {
  particular.notify = [](Kiv_ErrorHandle_t status) {
    waitingNotify(waitingArgument, status);
  };
  return &particular;
}

}  // namespace kiv::test

// The first provider is of another version of the API, with a table of its own.
Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  static const KivInterface_t old = {};
  static const KivInterface_t ours = kiv::test::makeProvider();
  static const KivInterface_t* list[] = {&old, &ours};
  *providerList = list;
  *numProviders = 2;
  return KIV_SUCCESS;
}
