/*
 * The backend that the recordings of these tests are replayed on. Prints each
 * call with what tells whether the recording reached it whole. The call named
 * by the environment variable STUB_FAIL returns STUB_STATUS.
 */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"

static Kiv_ErrorHandle_t called(const char* function) {
  const char* fail = getenv("STUB_FAIL");
  const char* status = getenv("STUB_STATUS");
  if (!fail || !status || strcmp(fail, function) != 0) return 0;
  return strtoul(status, NULL, 10);
}

static int object;

static Kiv_ErrorHandle_t backendCreate(Kiv_LogHandle_t logger,
                                       const KivBackend_Config_t** config,
                                       Kiv_BackendHandle_t* backend) {
  (void)config;
  printf("backendCreate %s\n", logger ? "logged" : "silent");
  *backend = &object;
  return called("backendCreate");
}

static Kiv_ErrorHandle_t contextCreate(Kiv_BackendHandle_t backend,
                                       Kiv_DeviceHandle_t device,
                                       const KivContext_Config_t** config,
                                       Kiv_ContextHandle_t* context) {
  (void)backend;
  (void)device;
  int count = 0;
  while (config && config[count]) ++count;
  printf("contextCreate %d\n", count);
  *context = &object;
  return called("contextCreate");
}

static Kiv_ErrorHandle_t graphCreate(Kiv_ContextHandle_t context,
                                     const char* name,
                                     const KivGraph_Config_t** config,
                                     Kiv_GraphHandle_t* graph) {
  (void)context;
  (void)config;
  printf("graphCreate %s\n", name);
  *graph = &object;
  return called("graphCreate");
}

static Kiv_ErrorHandle_t tensorCreateGraphTensor(Kiv_GraphHandle_t graph,
                                                 Kiv_Tensor_t* tensor) {
  (void)graph;
  const Kiv_ClientBuffer_t* buffer = &tensor->v1.clientBuf;
  printf("tensorCreateGraphTensor %.*s\n", (int)buffer->dataSize,
         (const char*)buffer->data);
  return called("tensorCreateGraphTensor");
}

static Kiv_ErrorHandle_t graphFinalize(Kiv_GraphHandle_t graph,
                                       Kiv_ProfileHandle_t profile,
                                       Kiv_SignalHandle_t signal) {
  (void)graph;
  (void)profile;
  (void)signal;
  printf("graphFinalize\n");
  return called("graphFinalize");
}

static Kiv_ErrorHandle_t contextGetBinary(Kiv_ContextHandle_t context,
                                          void* buffer,
                                          Kiv_ContextBinarySize_t size,
                                          Kiv_ContextBinarySize_t* written) {
  (void)context;
  memset(buffer, 'b', size);
  *written = size;
  printf("contextGetBinary %d\n", (int)size);
  return called("contextGetBinary");
}

static Kiv_ErrorHandle_t contextFree(Kiv_ContextHandle_t context,
                                     Kiv_ProfileHandle_t profile) {
  (void)context;
  (void)profile;
  printf("contextFree\n");
  return called("contextFree");
}

static Kiv_ErrorHandle_t backendFree(Kiv_BackendHandle_t backend) {
  (void)backend;
  printf("backendFree\n");
  return called("backendFree");
}

static Kiv_ErrorHandle_t logCreate(KivLog_Callback_t callback,
                                   KivLog_Level_t level,
                                   Kiv_LogHandle_t* logger) {
  (void)callback;
  printf("logCreate %d\n", (int)level);
  *logger = &object;
  return called("logCreate");
}

static Kiv_ErrorHandle_t logFree(Kiv_LogHandle_t logger) {
  (void)logger;
  printf("logFree\n");
  return called("logFree");
}

KIV_API Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  static const KivInterface_t provider = {
      .providerName = "STUB",
      .KIV_INTERFACE_VER_NAME = {
          .backendCreate = backendCreate,
          .backendFree = backendFree,
          .contextCreate = contextCreate,
          .contextFree = contextFree,
          .contextGetBinary = contextGetBinary,
          .graphCreate = graphCreate,
          .graphFinalize = graphFinalize,
          .tensorCreateGraphTensor = tensorCreateGraphTensor,
          .logCreate = logCreate,
          .logFree = logFree,
      }};
  static const KivInterface_t* providers[] = {&provider};
  *providerList = providers;
  *numProviders = 1;
  return called("getProviders");
}
