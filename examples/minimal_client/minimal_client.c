/*
 * A whole client of the Kiv API: one matrix product, executed once.
 *
 *   minimal_client libKivSaver.so
 *
 * The library may be any backend. With the Saver the calls are recorded in
 * ./saver_output instead of executed.
 */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"

#ifdef _WIN32
#include <windows.h>
#define openLibrary(path) ((void*)LoadLibraryA(path))
#define findFunction(library, name) \
  ((void*)(uintptr_t)GetProcAddress((HMODULE)(library), name))
#define closeLibrary(library) FreeLibrary((HMODULE)(library))
#else
#include <dlfcn.h>
#define openLibrary(path) dlopen(path, RTLD_NOW | RTLD_LOCAL)
#define findFunction(library, name) dlsym(library, name)
#define closeLibrary(library) dlclose(library)
#endif

static void require(int condition, const char* what) {
  if (condition) return;
  fprintf(stderr, "minimal_client: %s failed\n", what);
  exit(EXIT_FAILURE);
}

/* Every call of the API returns a status; 0 is success. */
#define CALL(function, ...) require(api->function(__VA_ARGS__) == 0, #function)

/* The functions are in a table of the library's first provider. */
static const KIV_INTERFACE_VER_TYPE* findInterface(void* library) {
  KivInterface_GetProvidersFn_t getProviders = NULL;
  void* address = findFunction(library, "KivInterface_getProviders");
  require(address != NULL, "finding KivInterface_getProviders");
  memcpy(&getProviders, &address, sizeof(getProviders));

  const KivInterface_t** providers = NULL;
  uint32_t count = 0;
  require(getProviders(&providers, &count) == 0 && count > 0,
          "KivInterface_getProviders");
  return &providers[0]->KIV_INTERFACE_VER_NAME;
}

/* A matrix of floats. Its memory is the caller's. */
static Kiv_Tensor_t matrix(const char* name, Kiv_TensorType_t type,
                           uint32_t dimensions[2], float* data) {
  Kiv_Tensor_t tensor = {.version = KIV_TENSOR_VERSION_1};
  tensor.v1.name = name;
  tensor.v1.type = type;
  tensor.v1.dataFormat = KIV_TENSOR_DATA_FORMAT_DENSE;
  tensor.v1.dataType = KIV_DATA_TYPE_FLOAT_32;
  tensor.v1.quantizeParams.encodingDefinition = KIV_DEFINITION_UNDEFINED;
  tensor.v1.quantizeParams.quantizationEncoding =
      KIV_QUANTIZATION_ENCODING_UNDEFINED;
  tensor.v1.rank = 2;
  tensor.v1.dimensions = dimensions;
  tensor.v1.memType = KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER;
  tensor.v1.clientBuf.data = data;
  if (data != NULL) {
    tensor.v1.clientBuf.dataSize =
        dimensions[0] * dimensions[1] * (uint32_t)sizeof(float);
  }
  return tensor;
}

/* Builds y = x * w in the graph and executes it. */
static void multiply(const KIV_INTERFACE_VER_TYPE* api,
                     Kiv_GraphHandle_t graph) {
  uint32_t xSize[] = {1, 3};
  uint32_t wSize[] = {3, 2};
  uint32_t ySize[] = {1, 2};
  float xData[] = {1, 2, 3};
  float wData[] = {1, 0, 0, 1, 1, 1};
  float yData[] = {0, 0};

  /* Weights have their data at creation, inputs and outputs at execution. */
  Kiv_Tensor_t x = matrix("x", KIV_TENSOR_TYPE_INPUT, xSize, NULL);
  Kiv_Tensor_t w = matrix("w", KIV_TENSOR_TYPE_STATIC, wSize, wData);
  Kiv_Tensor_t y = matrix("y", KIV_TENSOR_TYPE_OUTPUT, ySize, NULL);
  CALL(tensorCreateGraphTensor, graph, &x);
  CALL(tensorCreateGraphTensor, graph, &w);
  CALL(tensorCreateGraphTensor, graph, &y);

  /* The ids that the tensors have now identify them. */
  w.v1.clientBuf = (Kiv_ClientBuffer_t){NULL, 0};
  Kiv_Tensor_t operands[] = {x, w};
  Kiv_OpConfig_t product = {.version = KIV_OP_CONFIG_VERSION_1};
  product.v1.name = "product";
  product.v1.packageName = "kiv";
  product.v1.typeName = "MatMul";
  product.v1.numInputs = 2;
  product.v1.inputTensors = operands;
  product.v1.numOutputs = 1;
  product.v1.outputTensors = &y;
  CALL(graphAddNode, graph, product);
  CALL(graphFinalize, graph, NULL, NULL);

  x.v1.clientBuf = (Kiv_ClientBuffer_t){xData, sizeof(xData)};
  y.v1.clientBuf = (Kiv_ClientBuffer_t){yData, sizeof(yData)};
  CALL(graphExecute, graph, &x, 1, &y, 1, NULL, NULL);
  printf("y = (%g, %g)\n", (double)yData[0], (double)yData[1]);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "Usage: minimal_client LIBRARY\n");
    return EXIT_FAILURE;
  }
  void* library = openLibrary(argv[1]);
  require(library != NULL, argv[1]);
  const KIV_INTERFACE_VER_TYPE* api = findInterface(library);

  Kiv_BackendHandle_t backend = NULL;
  Kiv_ContextHandle_t context = NULL;
  Kiv_GraphHandle_t graph = NULL;
  CALL(backendCreate, NULL, NULL, &backend);
  CALL(contextCreate, backend, NULL, NULL, &context);
  CALL(graphCreate, context, "example", NULL, &graph);
  multiply(api, graph);
  CALL(contextFree, context, NULL); /* and with it the graph and its tensors */
  CALL(backendFree, backend);
  closeLibrary(library); /* the Saver ends its recording here */
  return EXIT_SUCCESS;
}
