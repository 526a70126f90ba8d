//==============================================================================
//
// A recording of calls of the Kiv inference API, written by the Saver 1.1.0.
// Compile it as C with the API's headers and link it with a backend library;
// run it in the directory of its data file to make the same calls again.
//
//==============================================================================

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"
#include "GPU/KivGpuBackend.h"
#include "GPU/KivGpuGraph.h"
#include "GPU/KivGpuContext.h"

#define VALIDATE(res, value) \
   do { \
      if (res == 0 || res == KIV_COMMON_ERROR_NOT_SUPPORTED) \
      { \
         res = value; \
         if (res != 0) \
         { \
            if (res == KIV_COMMON_ERROR_NOT_SUPPORTED) \
            { \
               printf("WARNING! Line %d KIV feature/API not supported\n", __LINE__); \
            } else { \
               printf("ERROR! Line %d with error value: %d\n", __LINE__, (unsigned int)error); \
            } \
         } \
      } \
   } \
   while(0)

int main(int argc, char** argv) {
   Kiv_ErrorHandle_t error = 0;
   KivLog_Level_t logLevel = KIV_LOG_LEVEL_ERROR;
   int logging = 0;
   for (int i = 1; i < argc; i++) {
     char* arg = argv[i];
     if (!strcmp("--logging", arg) || !strcmp("-l", arg)) {
       logging = 1;
       if (i+1 == argc) {
         printf("No log level provided, defaulting to KIV_LOG_LEVEL_ERROR\n");
         break;
       }
       char* value = argv[++i];
       if (!strcmp("error", value)) {
         logLevel = KIV_LOG_LEVEL_ERROR;
       } else if (!strcmp("warn", value)) {
         logLevel = KIV_LOG_LEVEL_WARN;
       } else if (!strcmp("info", value)) {
         logLevel = KIV_LOG_LEVEL_INFO;
       } else if (!strcmp("debug", value)) {
         logLevel = KIV_LOG_LEVEL_DEBUG;
       } else if (!strcmp("verbose", value)) {
         logLevel = KIV_LOG_LEVEL_VERBOSE;
       } else {
         printf("WARNING: Unknown log level provided: %s, defaulting to KIV_LOG_LEVEL_ERROR\n", value);
       }
     } else {
       printf("Usage: %s [options]\n\n"
              "-l <level>, --logging <level>      Enable logging, acceptable levels are: error,warn,info,debug,verbose\n", argv[0]);
       return -1;
     }
   }

   FILE* fp = fopen("params.bin", "rb");
   if (!fp) {
     error = -1;
     printf("ERROR! Could not open params.bin, ensure this file is in the current working directory when executing this program.\n");
     return error;
   }

   const KivInterface_t** providerList = NULL;
   uint32_t numProviders;
   VALIDATE(error, KivInterface_getProviders(&providerList, &numProviders));
   KIV_INTERFACE_VER_TYPE interface = providerList[0]->KIV_INTERFACE_VER_NAME;

   Kiv_LogHandle_t loghandle= NULL;
   if (logging) {
     VALIDATE(error, interface.logCreate(NULL, logLevel, &loghandle));
   }
   KivBackend_Config_t backendConfig_customConfig_0 = {KIV_BACKEND_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
   KivBackend_Config_t backendConfig_errorConfig_0 = {KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING, .errorConfig={(Kiv_ErrorReportingLevel_t)2, 64}};
   KivBackend_Config_t backendConfig_platformOption_0 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption="key:value"};
   KivBackend_Config_t backendConfig_platformOption_1 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption=NULL};
   const KivBackend_Config_t* backend_0_config_0[] = {&backendConfig_customConfig_0, &backendConfig_errorConfig_0, &backendConfig_platformOption_0, &backendConfig_platformOption_1, NULL};
   Kiv_BackendHandle_t backend_0;
   VALIDATE(error, interface.backendCreate(loghandle, backend_0_config_0, &backend_0));

   const KivBackend_Config_t* backend_1_config_0[] = {NULL};
   Kiv_BackendHandle_t backend_1;
   VALIDATE(error, interface.backendCreate(loghandle, backend_1_config_0, &backend_1));

   KivBackend_Config_t backendConfig_customConfig_1 = {KIV_BACKEND_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
   KivBackend_Config_t backendConfig_errorConfig_1 = {KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING, .errorConfig={(Kiv_ErrorReportingLevel_t)2, 64}};
   KivBackend_Config_t backendConfig_platformOption_2 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption="key:value"};
   KivBackend_Config_t backendConfig_platformOption_3 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption=NULL};
   const KivBackend_Config_t* backend_0_config_1[] = {&backendConfig_customConfig_1, &backendConfig_errorConfig_1, &backendConfig_platformOption_2, &backendConfig_platformOption_3, NULL};
   VALIDATE(error, interface.backendSetConfig(backend_0, backend_0_config_1));

   const KivBackend_Config_t* backend_config_0[] = {NULL};
   VALIDATE(error, interface.backendSetConfig(NULL, backend_config_0));

   VALIDATE(error, interface.propertyHasCapability((KivProperty_Key_t)5));

   VALIDATE(error, interface.backendRegisterOpPackage(backend_0, "ops\\\"mine\".so", "provider", NULL));

   uint32_t numOperations_0;
   const KivBackend_OperationName_t* operations_0;
   VALIDATE(error, interface.backendGetSupportedOperations(backend_0, &numOperations_0, &operations_0));

   VALIDATE(error, interface.backendGetSupportedOperations(backend_0, NULL, NULL));

   Kiv_Param_t* opConfig_0_params = NULL;
   Kiv_Tensor_t* opConfig_0_inputs = NULL;
   Kiv_Tensor_t* opConfig_0_outputs = NULL;
   Kiv_OpConfigV1_t opConfig_0_v1 = {NULL, NULL, NULL, 0, opConfig_0_params, 0, opConfig_0_inputs, 0, opConfig_0_outputs};
   Kiv_OpConfig_t opConfig_0 = {(Kiv_OpConfigVersion_t)1, .v1 = opConfig_0_v1};
   VALIDATE(error, interface.backendValidateOpConfig(backend_0, opConfig_0));

   const KivDevice_PlatformInfo_t* platformInfo_0;
   VALIDATE(error, interface.deviceGetPlatformInfo(loghandle, &platformInfo_0));

   VALIDATE(error, interface.deviceGetPlatformInfo(loghandle, NULL));

   // Saver does not record calls to backend-specific APIs via device infrastructure, they must be manually inserted if desired.
   KivDevice_Infrastructure_t deviceInfra_0;
   VALIDATE(error, interface.deviceGetInfrastructure(&deviceInfra_0));

   VALIDATE(error, interface.deviceGetInfrastructure(NULL));

   KivDevice_CoreInfoV1_t device_0_hardwareInfo_0_config_hwDevice_0_core_0_v1 = {0, 7, NULL};
   KivDevice_CoreInfo_t device_0_hardwareInfo_0_config_hwDevice_0_core_0 = {(KivDevice_CoreInfoVersion_t)1, .v1 = device_0_hardwareInfo_0_config_hwDevice_0_core_0_v1};
   KivDevice_CoreInfoV1_t device_0_hardwareInfo_0_config_hwDevice_0_core_1_v1 = {1, 8, NULL};
   KivDevice_CoreInfo_t device_0_hardwareInfo_0_config_hwDevice_0_core_1 = {(KivDevice_CoreInfoVersion_t)1, .v1 = device_0_hardwareInfo_0_config_hwDevice_0_core_1_v1};
   KivDevice_CoreInfo_t device_0_hardwareInfo_0_config_hwDevice_0_cores[] = {device_0_hardwareInfo_0_config_hwDevice_0_core_0, device_0_hardwareInfo_0_config_hwDevice_0_core_1};
   KivDevice_HardwareDeviceInfoV1_t device_0_hardwareInfo_0_config_hwDevice_0_v1 = {5, 6, 2, device_0_hardwareInfo_0_config_hwDevice_0_cores, NULL};
   KivDevice_HardwareDeviceInfo_t device_0_hardwareInfo_0_config_hwDevice_0 = {(KivDevice_HardwareDeviceInfoVersion_t)1, .v1 = device_0_hardwareInfo_0_config_hwDevice_0_v1};
   KivDevice_HardwareDeviceInfoV1_t device_0_hardwareInfo_0_config_hwDevice_1_v1 = {9, 6, 0, NULL, NULL};
   KivDevice_HardwareDeviceInfo_t device_0_hardwareInfo_0_config_hwDevice_1 = {(KivDevice_HardwareDeviceInfoVersion_t)1, .v1 = device_0_hardwareInfo_0_config_hwDevice_1_v1};
   KivDevice_HardwareDeviceInfo_t device_0_hardwareInfo_0_config_hwDevices[] = {device_0_hardwareInfo_0_config_hwDevice_0, device_0_hardwareInfo_0_config_hwDevice_1};
   KivDevice_PlatformInfoV1_t device_0_hardwareInfo_0_config_v1 = {2, device_0_hardwareInfo_0_config_hwDevices};
   KivDevice_PlatformInfo_t device_0_hardwareInfo_0_config = {(KivDevice_PlatformInfoVersion_t)1, .v1 = device_0_hardwareInfo_0_config_v1};
   KivDevice_Config_t device_0_hardwareInfo_0 = {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, .hardwareInfo = &device_0_hardwareInfo_0_config};
   KivDevice_Config_t device_0_hardwareInfo_1 = {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, .hardwareInfo = NULL};
   KivDevice_Config_t device_0_customConfig_0 = {KIV_DEVICE_CONFIG_OPTION_CUSTOM, .customConfig = NULL};
   const KivDevice_Config_t* device_0_config_0[] = {&device_0_hardwareInfo_0, &device_0_hardwareInfo_1, &device_0_customConfig_0, NULL};
   Kiv_DeviceHandle_t device_0;
   VALIDATE(error, interface.deviceCreate(loghandle, device_0_config_0, &device_0));

   const KivDevice_Config_t* device_0_config_1[] = {NULL};
   VALIDATE(error, interface.deviceSetConfig(device_0, device_0_config_1));

   const KivDevice_PlatformInfo_t* platformInfo_1;
   VALIDATE(error, interface.deviceGetInfo(device_0, &platformInfo_1));

   VALIDATE(error, interface.deviceGetInfo(device_0, NULL));

   KivContext_Config_t context_0_customConfig_0 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig=NULL};

   KivGpuContext_CustomConfig_t context_0_gpuConfig_0_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT, .perfHint = (KivGpuContext_PerfHint_t)2};
   KivContext_Config_t context_0_gpuConfig_0 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &context_0_gpuConfig_0_customConfig};

   KivGpuContext_CustomConfig_t context_0_gpuConfig_1_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS, .useGLBuffers = 1};
   KivContext_Config_t context_0_gpuConfig_1 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &context_0_gpuConfig_1_customConfig};

   KivGpuContext_CustomConfig_t context_0_gpuConfig_2_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR, .kernelRepoDir = "/tmp/kernels"};
   KivContext_Config_t context_0_gpuConfig_2 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &context_0_gpuConfig_2_customConfig};

   KivGpuContext_CustomConfig_t context_0_gpuConfig_3_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO, .invalidateKernelRepo = 1};
   KivContext_Config_t context_0_gpuConfig_3 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &context_0_gpuConfig_3_customConfig};

   KivGpuContext_CustomConfig_t context_0_gpuConfig_4_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED, .perfHint = KIV_GPU_CONTEXT_PERF_HINT_HIGH};
   KivContext_Config_t context_0_gpuConfig_4 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &context_0_gpuConfig_4_customConfig};

   KivContext_Config_t context_0_priority_0 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)200};

   KivContext_Config_t context_0_errorConfig_0 = {KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING, .errorConfig={(Kiv_ErrorReportingLevel_t)2, 64}};

   KivContext_Config_t context_0_oemString_0 = {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, .oemString="oem"};

   KivContext_Config_t context_0_oemString_1 = {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, .oemString=NULL};

   KivContext_Config_t context_0_asyncExeQueueDepth_0 = {KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH, .asyncExeQueueDepth={KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC, .depth=12}};

   const char* const context_0_enableGraphs_0_array[] = {"a", "b", NULL};
   KivContext_Config_t context_0_enableGraphs_0 = {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, .enableGraphs=context_0_enableGraphs_0_array};

   const char* const context_0_enableGraphs_1_array[] = {NULL};
   KivContext_Config_t context_0_enableGraphs_1 = {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, .enableGraphs=context_0_enableGraphs_1_array};

   KivContext_Config_t context_0_memoryLimitHint_0 = {KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT, .memoryLimitHint=1099511627776};

   KivContext_Config_t context_0_isPersistentBinary_0 = {KIV_CONTEXT_CONFIG_PERSISTENT_BINARY, .isPersistentBinary=1};

   const KivContext_Config_t* context_0_config_0[] = {&context_0_customConfig_0, &context_0_gpuConfig_0, &context_0_gpuConfig_1, &context_0_gpuConfig_2, &context_0_gpuConfig_3, &context_0_gpuConfig_4, &context_0_priority_0, &context_0_errorConfig_0, &context_0_oemString_0, &context_0_oemString_1, &context_0_asyncExeQueueDepth_0, &context_0_enableGraphs_0, &context_0_enableGraphs_1, &context_0_memoryLimitHint_0, &context_0_isPersistentBinary_0, NULL};
   Kiv_ContextHandle_t context_0;
   VALIDATE(error, interface.contextCreate(backend_0, device_0, context_0_config_0, &context_0));

   KivContext_Config_t context_0_priority_1 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)0};

   const KivContext_Config_t* context_0_config_1[] = {&context_0_priority_1, NULL};
   VALIDATE(error, interface.contextSetConfig(context_0, context_0_config_1));

   VALIDATE(error, interface.contextSetConfig(context_0, NULL));

   Kiv_ProfileHandle_t profile_0;
   VALIDATE(error, interface.profileCreate(backend_0, (KivProfile_Level_t)2, &profile_0));

   KivProfile_Config_t profile_0_maxEvents_0 = {KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS, .numMaxEvents=1000ULL};
   KivProfile_Config_t profile_0_customConfig_0 = {KIV_PROFILE_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
   const KivProfile_Config_t* profile_0_config_0[] = {&profile_0_maxEvents_0, &profile_0_customConfig_0, NULL};
   VALIDATE(error, interface.profileSetConfig(profile_0, profile_0_config_0));

   Kiv_ContextBinarySize_t context_0_binaryBufferSize;
   VALIDATE(error, interface.contextGetBinarySize(context_0, &context_0_binaryBufferSize));

   VALIDATE(error, interface.contextGetBinarySize(context_0, NULL));

   Kiv_ContextBinarySize_t context_0_writtenBufferSize;
   uint8_t* context_0_buffer = (uint8_t*)malloc(10);
   VALIDATE(error, interface.contextGetBinary(context_0, context_0_buffer, 10, &context_0_writtenBufferSize));
   FILE* context_0_file = fopen("context_0.bin", "wb");
   if (!context_0_file) {
      printf("ERROR: File open of context_0.bin failed on line: %d\n", __LINE__);
      return -1;
   }
   fwrite(context_0_buffer, 1, context_0_writtenBufferSize, context_0_file);
   fclose(context_0_file);
   free(context_0_buffer);

   Kiv_ContextHandle_t context_1;
   static uint8_t context_1_binary[5];
   fread(context_1_binary, 1, 5, fp);
   VALIDATE(error, interface.contextCreateFromBinary(backend_0, NULL, NULL, context_1_binary, 5, &context_1, profile_0));

   Kiv_ContextHandle_t context_2;
   static uint8_t context_2_binary[0];
   fread(context_2_binary, 1, 0, fp);
   KivContext_Config_t context_2_priority_0 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)100};

   const KivContext_Config_t* context_2_config_0[] = {&context_2_priority_0, NULL};
   VALIDATE(error, interface.contextCreateFromBinaryWithSignal(backend_0, device_0, context_2_config_0, context_2_binary, 0, &context_2, NULL, NULL));

   static uint8_t binaryBuffer_0[3];
   fread(binaryBuffer_0, 1, 3, fp);
   KivContext_Config_t context_priority_0 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)100};

   const KivContext_Config_t* context_config_0[] = {&context_priority_0, NULL};
   VALIDATE(error, interface.contextValidateBinary(backend_0, device_0, context_config_0, binaryBuffer_0, 3));

   KivGpuGraph_CustomConfig_t main_graph_gpuConfig_0_customConfig = {(KivGpu_Precision_t)1, 0, 1, 0};
   KivGraph_Config_t main_graph_gpuConfig_0 = {KIV_GRAPH_CONFIG_OPTION_CUSTOM, .customConfig=&main_graph_gpuConfig_0_customConfig};
   KivGraph_Config_t main_graph_priority_0 = {KIV_GRAPH_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)150};
   KivGraph_Config_t main_graph_customConfig_0 = {KIV_GRAPH_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
   const KivGraph_Config_t* main_graph_config_0[] = {&main_graph_gpuConfig_0, &main_graph_priority_0, &main_graph_customConfig_0, NULL};
   Kiv_GraphHandle_t main_graph;
   VALIDATE(error, interface.graphCreate(context_0, "main graph", main_graph_config_0, &main_graph));

   Kiv_GraphHandle_t loop_body;
   VALIDATE(error, interface.graphCreateSubgraph(main_graph, "loop:body", &loop_body));

   const KivGraph_Config_t* main_graph_config_1[] = {NULL};
   VALIDATE(error, interface.graphSetConfig(main_graph, main_graph_config_1));

   VALIDATE(error, interface.graphSetConfig(loop_body, NULL));

   Kiv_GraphHandle_t main_graph_0;
   VALIDATE(error, interface.graphRetrieve(context_0, "main graph", &main_graph_0));

   Kiv_GraphHandle_t _4_loaded;
   VALIDATE(error, interface.graphRetrieve(context_1, "4 loaded", &_4_loaded));

   uint32_t context_0_tensor_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t context_0_tensor_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static float context_0_tensor_0_data[6];
   fread(context_0_tensor_0_data, 4, 6, fp);
   Kiv_ClientBuffer_t context_0_tensor_0_clientBuf = {(void*)context_0_tensor_0_data, 24};
   Kiv_TensorV1_t context_0_tensor_0_v1 = {77, "weights/0", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)562, context_0_tensor_0_quantizeParams, 2, context_0_tensor_0_dims, (Kiv_TensorMemType_t)0, context_0_tensor_0_clientBuf};
   Kiv_Tensor_t context_0_tensor_0 = {(Kiv_TensorVersion_t)1, .v1 = context_0_tensor_0_v1};
   VALIDATE(error, interface.tensorCreateContextTensor(context_0, &context_0_tensor_0));

   uint32_t main_graph_tensor_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_tensor_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t main_graph_tensor_0_clientBuf = {NULL, 0};
   uint8_t main_graph_tensor_0_isDynamicDimensions[] = {1, 0};
   Kiv_TensorV2_t main_graph_tensor_0_v2 = {0, "activation", (Kiv_TensorType_t)3, 0, (Kiv_DataType_t)562, main_graph_tensor_0_quantizeParams, 2, main_graph_tensor_0_dims, (Kiv_TensorMemType_t)0, main_graph_tensor_0_clientBuf, main_graph_tensor_0_isDynamicDimensions, {(Kiv_SparseLayoutType_t)0,{3,2}}, 1};
   Kiv_Tensor_t main_graph_tensor_0 = {(Kiv_TensorVersion_t)2, .v2 = main_graph_tensor_0_v2};
   VALIDATE(error, interface.tensorCreateGraphTensor(main_graph, &main_graph_tensor_0));

   Kiv_QuantizeParams_t loop_body_tensor_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   // Reading 4-bit fixed point tensor data into a byte array since there is not a native 4-bit datatype.
   static uint8_t loop_body_tensor_0_data[10];
   fread(loop_body_tensor_0_data, 1, 10, fp);
   Kiv_ClientBuffer_t loop_body_tensor_0_clientBuf = {(void*)loop_body_tensor_0_data, 10};
   Kiv_TensorV1_t loop_body_tensor_0_v1 = {0, NULL, (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)772, loop_body_tensor_0_quantizeParams, 2, NULL, (Kiv_TensorMemType_t)0, loop_body_tensor_0_clientBuf};
   Kiv_Tensor_t loop_body_tensor_0 = {(Kiv_TensorVersion_t)1, .v1 = loop_body_tensor_0_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(loop_body, &loop_body_tensor_0));

   Kiv_QuantizeParams_t loop_body_tensor_1_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   // Reading 4-bit fixed point tensor data into a byte array since there is not a native 4-bit datatype.
   static uint8_t loop_body_tensor_1_data[10];
   fread(loop_body_tensor_1_data, 1, 10, fp);
   Kiv_ClientBuffer_t loop_body_tensor_1_clientBuf = {(void*)loop_body_tensor_1_data, 10};
   Kiv_TensorV1_t loop_body_tensor_1_v1 = {0, NULL, (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1028, loop_body_tensor_1_quantizeParams, 2, NULL, (Kiv_TensorMemType_t)0, loop_body_tensor_1_clientBuf};
   Kiv_Tensor_t loop_body_tensor_1 = {(Kiv_TensorVersion_t)1, .v1 = loop_body_tensor_1_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(loop_body, &loop_body_tensor_1));

   Kiv_QuantizeParams_t loop_body_tensor_2_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static float loop_body_tensor_2_data[2];
   fread(loop_body_tensor_2_data, 4, 2, fp);
   Kiv_ClientBuffer_t loop_body_tensor_2_clientBuf = {(void*)loop_body_tensor_2_data, 10};
   Kiv_TensorV1_t loop_body_tensor_2_v1 = {0, NULL, (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)534, loop_body_tensor_2_quantizeParams, 2, NULL, (Kiv_TensorMemType_t)0, loop_body_tensor_2_clientBuf};
   Kiv_Tensor_t loop_body_tensor_2 = {(Kiv_TensorVersion_t)1, .v1 = loop_body_tensor_2_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(loop_body, &loop_body_tensor_2));

   Kiv_QuantizeParams_t loop_body_tensor_3_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static double loop_body_tensor_3_data[1];
   fread(loop_body_tensor_3_data, 8, 1, fp);
   Kiv_ClientBuffer_t loop_body_tensor_3_clientBuf = {(void*)loop_body_tensor_3_data, 10};
   Kiv_TensorV1_t loop_body_tensor_3_v1 = {0, NULL, (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)612, loop_body_tensor_3_quantizeParams, 2, NULL, (Kiv_TensorMemType_t)0, loop_body_tensor_3_clientBuf};
   Kiv_Tensor_t loop_body_tensor_3 = {(Kiv_TensorVersion_t)1, .v1 = loop_body_tensor_3_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(loop_body, &loop_body_tensor_3));

   Kiv_QuantizeParams_t loop_body_tensor_4_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static uint8_t loop_body_tensor_4_data[10];
   fread(loop_body_tensor_4_data, 1, 10, fp);
   Kiv_ClientBuffer_t loop_body_tensor_4_clientBuf = {(void*)loop_body_tensor_4_data, 10};
   Kiv_TensorV1_t loop_body_tensor_4_v1 = {0, NULL, (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1288, loop_body_tensor_4_quantizeParams, 2, NULL, (Kiv_TensorMemType_t)0, loop_body_tensor_4_clientBuf};
   Kiv_Tensor_t loop_body_tensor_4 = {(Kiv_TensorVersion_t)1, .v1 = loop_body_tensor_4_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(loop_body, &loop_body_tensor_4));

   uint32_t main_graph_tensor_1_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_tensor_1_quantizeParams = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)0, .scaleOffsetEncoding = {0.00392156886, -128}};
   Kiv_ClientBuffer_t main_graph_tensor_1_clientBuf = {NULL, 0};
   Kiv_TensorV1_t main_graph_tensor_1_v1 = {0, "q", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1032, main_graph_tensor_1_quantizeParams, 2, main_graph_tensor_1_dims, (Kiv_TensorMemType_t)0, main_graph_tensor_1_clientBuf};
   Kiv_Tensor_t main_graph_tensor_1 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_tensor_1_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(main_graph, &main_graph_tensor_1));

   uint32_t main_graph_tensor_2_dims[] = {2, 3};
   Kiv_ScaleOffset_t main_graph_tensor_2_quantizeParams_scaleOffsets[] = {{0.100000001, -128}, {1.00000001e-10, 2}};
   Kiv_AxisScaleOffset_t main_graph_tensor_2_quantizeParams_axisScaleOffset = {1, 2, main_graph_tensor_2_quantizeParams_scaleOffsets};
   Kiv_QuantizeParams_t main_graph_tensor_2_quantizeParams = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)1, .axisScaleOffsetEncoding = main_graph_tensor_2_quantizeParams_axisScaleOffset};
   Kiv_ClientBuffer_t main_graph_tensor_2_clientBuf = {NULL, 0};
   Kiv_TensorV1_t main_graph_tensor_2_v1 = {0, "q", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1032, main_graph_tensor_2_quantizeParams, 2, main_graph_tensor_2_dims, (Kiv_TensorMemType_t)0, main_graph_tensor_2_clientBuf};
   Kiv_Tensor_t main_graph_tensor_2 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_tensor_2_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(main_graph, &main_graph_tensor_2));

   uint32_t main_graph_tensor_3_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_tensor_3_quantizeParams = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)2, .bwScaleOffsetEncoding = {4, 0.5, -8}};
   Kiv_ClientBuffer_t main_graph_tensor_3_clientBuf = {NULL, 0};
   Kiv_TensorV1_t main_graph_tensor_3_v1 = {0, "q", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1032, main_graph_tensor_3_quantizeParams, 2, main_graph_tensor_3_dims, (Kiv_TensorMemType_t)0, main_graph_tensor_3_clientBuf};
   Kiv_Tensor_t main_graph_tensor_3 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_tensor_3_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(main_graph, &main_graph_tensor_3));

   uint32_t main_graph_tensor_4_dims[] = {2, 3};
   float main_graph_tensor_4_quantizeParams_scales[] = {1, 0.333333343};
   int32_t main_graph_tensor_4_quantizeParams_offsets[] = {-2147483647, 7};
   Kiv_BwAxisScaleOffset_t main_graph_tensor_4_quantizeParams_bwAxisScaleOffset = {4, 3, 2, main_graph_tensor_4_quantizeParams_scales, main_graph_tensor_4_quantizeParams_offsets};
   Kiv_QuantizeParams_t main_graph_tensor_4_quantizeParams = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)3, .bwAxisScaleOffsetEncoding = main_graph_tensor_4_quantizeParams_bwAxisScaleOffset};
   Kiv_ClientBuffer_t main_graph_tensor_4_clientBuf = {NULL, 0};
   Kiv_TensorV1_t main_graph_tensor_4_v1 = {0, "q", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)1032, main_graph_tensor_4_quantizeParams, 2, main_graph_tensor_4_dims, (Kiv_TensorMemType_t)0, main_graph_tensor_4_clientBuf};
   Kiv_Tensor_t main_graph_tensor_4 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_tensor_4_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(main_graph, &main_graph_tensor_4));

   Kiv_Scalar_t _1x1_conv_0_param_0_scalar = {(Kiv_DataType_t)8, .int8Value = -128};
   Kiv_Param_t _1x1_conv_0_param_0 = {(Kiv_ParamType_t)0, "int8", .scalarParam = _1x1_conv_0_param_0_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_1_scalar = {(Kiv_DataType_t)22, .int16Value = -32768};
   Kiv_Param_t _1x1_conv_0_param_1 = {(Kiv_ParamType_t)0, "int16", .scalarParam = _1x1_conv_0_param_1_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_2_scalar = {(Kiv_DataType_t)50, .int32Value = -2147483647};
   Kiv_Param_t _1x1_conv_0_param_2 = {(Kiv_ParamType_t)0, "int32", .scalarParam = _1x1_conv_0_param_2_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_3_scalar = {(Kiv_DataType_t)264, .uint8Value = 255};
   Kiv_Param_t _1x1_conv_0_param_3 = {(Kiv_ParamType_t)0, "uint8", .scalarParam = _1x1_conv_0_param_3_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_4_scalar = {(Kiv_DataType_t)278, .uint16Value = 65535};
   Kiv_Param_t _1x1_conv_0_param_4 = {(Kiv_ParamType_t)0, "uint16", .scalarParam = _1x1_conv_0_param_4_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_5_scalar = {(Kiv_DataType_t)306, .uint32Value = 4294967295};
   Kiv_Param_t _1x1_conv_0_param_5 = {(Kiv_ParamType_t)0, "uint32", .scalarParam = _1x1_conv_0_param_5_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_6_scalar = {(Kiv_DataType_t)534, .floatValue = 0.100000001};
   Kiv_Param_t _1x1_conv_0_param_6 = {(Kiv_ParamType_t)0, "half", .scalarParam = _1x1_conv_0_param_6_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_7_scalar = {(Kiv_DataType_t)562, .floatValue = 0.100000001};
   Kiv_Param_t _1x1_conv_0_param_7 = {(Kiv_ParamType_t)0, "single", .scalarParam = _1x1_conv_0_param_7_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_8_scalar = {(Kiv_DataType_t)1288, .bool8Value = 1};
   Kiv_Param_t _1x1_conv_0_param_8 = {(Kiv_ParamType_t)0, "bool", .scalarParam = _1x1_conv_0_param_8_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_9_scalar = {(Kiv_DataType_t)1544, .stringValue = "linear"};
   Kiv_Param_t _1x1_conv_0_param_9 = {(Kiv_ParamType_t)0, "text", .scalarParam = _1x1_conv_0_param_9_scalar};
   Kiv_Scalar_t _1x1_conv_0_param_10_scalar = {(Kiv_DataType_t)1544, .stringValue = NULL};
   Kiv_Param_t _1x1_conv_0_param_10 = {(Kiv_ParamType_t)0, NULL, .scalarParam = _1x1_conv_0_param_10_scalar};
   uint32_t _1x1_conv_0_param_11_tensor_dims[] = {2, 3};
   Kiv_QuantizeParams_t _1x1_conv_0_param_11_tensor_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static uint8_t _1x1_conv_0_param_11_tensor_data[2];
   fread(_1x1_conv_0_param_11_tensor_data, 1, 2, fp);
   Kiv_ClientBuffer_t _1x1_conv_0_param_11_tensor_clientBuf = {(void*)_1x1_conv_0_param_11_tensor_data, 2};
   Kiv_TensorV1_t _1x1_conv_0_param_11_tensor_v1 = {0, "axes", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)264, _1x1_conv_0_param_11_tensor_quantizeParams, 2, _1x1_conv_0_param_11_tensor_dims, (Kiv_TensorMemType_t)0, _1x1_conv_0_param_11_tensor_clientBuf};
   Kiv_Tensor_t _1x1_conv_0_param_11_tensor = {(Kiv_TensorVersion_t)1, .v1 = _1x1_conv_0_param_11_tensor_v1};
   Kiv_Param_t _1x1_conv_0_param_11 = {(Kiv_ParamType_t)1, "axes", .tensorParam = _1x1_conv_0_param_11_tensor};
   Kiv_Param_t _1x1_conv_0_params[] = {_1x1_conv_0_param_0, _1x1_conv_0_param_1, _1x1_conv_0_param_2, _1x1_conv_0_param_3, _1x1_conv_0_param_4, _1x1_conv_0_param_5, _1x1_conv_0_param_6, _1x1_conv_0_param_7, _1x1_conv_0_param_8, _1x1_conv_0_param_9, _1x1_conv_0_param_10, _1x1_conv_0_param_11};
   uint32_t _1x1_conv_0_input_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t _1x1_conv_0_input_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t _1x1_conv_0_input_0_clientBuf = {NULL, 0};
   Kiv_TensorV1_t _1x1_conv_0_input_0_v1 = {context_0_tensor_0.v1.id, "weights/0", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)562, _1x1_conv_0_input_0_quantizeParams, 2, _1x1_conv_0_input_0_dims, (Kiv_TensorMemType_t)0, _1x1_conv_0_input_0_clientBuf};
   Kiv_Tensor_t _1x1_conv_0_input_0 = {(Kiv_TensorVersion_t)1, .v1 = _1x1_conv_0_input_0_v1};
   uint32_t _1x1_conv_0_input_1_dims[] = {2, 3};
   Kiv_QuantizeParams_t _1x1_conv_0_input_1_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t _1x1_conv_0_input_1_clientBuf = {NULL, 0};
   Kiv_TensorV1_t _1x1_conv_0_input_1_v1 = {0, "unknown", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)562, _1x1_conv_0_input_1_quantizeParams, 2, _1x1_conv_0_input_1_dims, (Kiv_TensorMemType_t)0, _1x1_conv_0_input_1_clientBuf};
   Kiv_Tensor_t _1x1_conv_0_input_1 = {(Kiv_TensorVersion_t)1, .v1 = _1x1_conv_0_input_1_v1};
   Kiv_Tensor_t _1x1_conv_0_inputs[] = {_1x1_conv_0_input_0, _1x1_conv_0_input_1};
   uint32_t _1x1_conv_0_output_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t _1x1_conv_0_output_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t _1x1_conv_0_output_0_clientBuf = {NULL, 0};
   uint8_t _1x1_conv_0_output_0_isDynamicDimensions[] = {1, 0};
   Kiv_TensorV2_t _1x1_conv_0_output_0_v2 = {main_graph_tensor_0.v2.id, "activation", (Kiv_TensorType_t)3, 0, (Kiv_DataType_t)562, _1x1_conv_0_output_0_quantizeParams, 2, _1x1_conv_0_output_0_dims, (Kiv_TensorMemType_t)0, _1x1_conv_0_output_0_clientBuf, _1x1_conv_0_output_0_isDynamicDimensions, {(Kiv_SparseLayoutType_t)0,{3,2}}, 1};
   Kiv_Tensor_t _1x1_conv_0_output_0 = {(Kiv_TensorVersion_t)2, .v2 = _1x1_conv_0_output_0_v2};
   Kiv_Tensor_t _1x1_conv_0_outputs[] = {_1x1_conv_0_output_0};
   Kiv_OpConfigV1_t _1x1_conv_0_v1 = {"1x1 conv", "package", "Conv2d", 12, _1x1_conv_0_params, 2, _1x1_conv_0_inputs, 1, _1x1_conv_0_outputs};
   Kiv_OpConfig_t _1x1_conv_0 = {(Kiv_OpConfigVersion_t)1, .v1 = _1x1_conv_0_v1};
   VALIDATE(error, interface.graphAddNode(main_graph, _1x1_conv_0));

   Kiv_Param_t* opConfig_1_params = NULL;
   Kiv_Tensor_t* opConfig_1_inputs = NULL;
   Kiv_Tensor_t* opConfig_1_outputs = NULL;
   Kiv_OpConfigV1_t opConfig_1_v1 = {NULL, NULL, NULL, 0, opConfig_1_params, 0, opConfig_1_inputs, 0, opConfig_1_outputs};
   Kiv_OpConfig_t opConfig_1 = {(Kiv_OpConfigVersion_t)1, .v1 = opConfig_1_v1};
   VALIDATE(error, interface.graphAddNode(loop_body, opConfig_1));

   VALIDATE(error, interface.graphFinalize(loop_body, NULL, NULL));

   VALIDATE(error, interface.graphFinalize(main_graph, profile_0, NULL));

   uint32_t main_graph_inputTensor_0_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_inputTensor_0_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static uint16_t main_graph_inputTensor_0_0_data[2];
   fread(main_graph_inputTensor_0_0_data, 2, 2, fp);
   Kiv_ClientBuffer_t main_graph_inputTensor_0_0_clientBuf = {(void*)main_graph_inputTensor_0_0_data, 4};
   Kiv_TensorV1_t main_graph_inputTensor_0_0_v1 = {0, "in", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)278, main_graph_inputTensor_0_0_quantizeParams, 2, main_graph_inputTensor_0_0_dims, (Kiv_TensorMemType_t)0, main_graph_inputTensor_0_0_clientBuf};
   Kiv_Tensor_t main_graph_inputTensor_0_0 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_inputTensor_0_0_v1};
   uint32_t main_graph_outputTensor_0_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_outputTensor_0_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t main_graph_outputTensor_0_0_clientBuf = {NULL, 0};
   uint8_t main_graph_outputTensor_0_0_isDynamicDimensions[] = {1, 0};
   Kiv_TensorV2_t main_graph_outputTensor_0_0_v2 = {main_graph_tensor_0.v2.id, "activation", (Kiv_TensorType_t)3, 0, (Kiv_DataType_t)562, main_graph_outputTensor_0_0_quantizeParams, 2, main_graph_outputTensor_0_0_dims, (Kiv_TensorMemType_t)0, main_graph_outputTensor_0_0_clientBuf, main_graph_outputTensor_0_0_isDynamicDimensions, {(Kiv_SparseLayoutType_t)0,{3,2}}, 1};
   Kiv_Tensor_t main_graph_outputTensor_0_0 = {(Kiv_TensorVersion_t)2, .v2 = main_graph_outputTensor_0_0_v2};
   Kiv_Tensor_t main_graph_inputTensors_0[] = {main_graph_inputTensor_0_0};
   Kiv_Tensor_t main_graph_outputTensors_0[] = {main_graph_outputTensor_0_0};
   VALIDATE(error, interface.graphExecute(main_graph, main_graph_inputTensors_0, 1, main_graph_outputTensors_0, 1, profile_0, NULL));

   uint32_t main_graph_inputTensor_1_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_inputTensor_1_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static uint16_t main_graph_inputTensor_1_0_data[2];
   fread(main_graph_inputTensor_1_0_data, 2, 2, fp);
   Kiv_ClientBuffer_t main_graph_inputTensor_1_0_clientBuf = {(void*)main_graph_inputTensor_1_0_data, 4};
   Kiv_TensorV1_t main_graph_inputTensor_1_0_v1 = {0, "in", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)278, main_graph_inputTensor_1_0_quantizeParams, 2, main_graph_inputTensor_1_0_dims, (Kiv_TensorMemType_t)0, main_graph_inputTensor_1_0_clientBuf};
   Kiv_Tensor_t main_graph_inputTensor_1_0 = {(Kiv_TensorVersion_t)1, .v1 = main_graph_inputTensor_1_0_v1};
   uint32_t main_graph_outputTensor_1_0_dims[] = {2, 3};
   Kiv_QuantizeParams_t main_graph_outputTensor_1_0_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t main_graph_outputTensor_1_0_clientBuf = {NULL, 0};
   uint8_t main_graph_outputTensor_1_0_isDynamicDimensions[] = {1, 0};
   Kiv_TensorV2_t main_graph_outputTensor_1_0_v2 = {main_graph_tensor_0.v2.id, "activation", (Kiv_TensorType_t)3, 0, (Kiv_DataType_t)562, main_graph_outputTensor_1_0_quantizeParams, 2, main_graph_outputTensor_1_0_dims, (Kiv_TensorMemType_t)0, main_graph_outputTensor_1_0_clientBuf, main_graph_outputTensor_1_0_isDynamicDimensions, {(Kiv_SparseLayoutType_t)0,{3,2}}, 1};
   Kiv_Tensor_t main_graph_outputTensor_1_0 = {(Kiv_TensorVersion_t)2, .v2 = main_graph_outputTensor_1_0_v2};
   Kiv_Tensor_t main_graph_inputTensors_1[] = {main_graph_inputTensor_1_0};
   Kiv_Tensor_t main_graph_outputTensors_1[] = {main_graph_outputTensor_1_0};
   VALIDATE(error, interface.graphExecute(main_graph, main_graph_inputTensors_1, 1, main_graph_outputTensors_1, 1, profile_0, NULL));

   Kiv_Tensor_t loop_body_inputTensors_0[] = {};
   Kiv_Tensor_t loop_body_outputTensors_0[] = {};
   VALIDATE(error, interface.graphExecute(loop_body, loop_body_inputTensors_0, 0, loop_body_outputTensors_0, 0, NULL, NULL));

   const KivProfile_EventId_t* profileEventIds_0;
   uint32_t numEvents_0;
   VALIDATE(error, interface.profileGetEvents(profile_0, &profileEventIds_0, &numEvents_0));

   VALIDATE(error, interface.profileGetEvents(profile_0, NULL, NULL));

   const KivProfile_EventId_t* subEventIds_0;
   uint32_t numSubEvents_0;
   VALIDATE(error, interface.profileGetSubEvents((KivProfile_EventId_t)7, &subEventIds_0, &numSubEvents_0));

   VALIDATE(error, interface.profileGetSubEvents((KivProfile_EventId_t)8, NULL, NULL));

   // The event data will not be used in any way, any usage must be inserted manually if desired.
   KivProfile_EventData_t eventData_0;
   VALIDATE(error, interface.profileGetEventData((KivProfile_EventId_t)7, &eventData_0));

   VALIDATE(error, interface.profileGetEventData((KivProfile_EventId_t)8, NULL));

   // The event data will not be used in any way, any usage must be inserted manually if desired.
   KivProfile_ExtendedEventData_t extendedEventData_0;
   VALIDATE(error, interface.profileGetExtendedEventData((KivProfile_EventId_t)7, &extendedEventData_0));

   VALIDATE(error, interface.profileGetExtendedEventData((KivProfile_EventId_t)8, NULL));

   VALIDATE(error, interface.contextFree(context_1, profile_0));

   VALIDATE(error, interface.contextFree(context_2, NULL));

   VALIDATE(error, interface.contextFree(context_0, NULL));

   VALIDATE(error, interface.profileFree(profile_0));

   VALIDATE(error, interface.deviceFree(device_0));

   VALIDATE(error, interface.backendFree(backend_1));

   VALIDATE(error, interface.backendFree(backend_0));

   if (logging) {
     VALIDATE(error, interface.logFree(loghandle));
   }

   if (fclose(fp)) error = -1;
   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : error;
}
