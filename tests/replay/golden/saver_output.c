//==============================================================================
//
// A recording of calls of the Kiv inference API, written by the Saver.
// Compile it as C with the API's headers and link it with a backend library;
// run it in the directory of its data file to make the same calls again.
//
//==============================================================================

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"

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
   const KivBackend_Config_t* backend_0_config_0[] = {NULL};
   Kiv_BackendHandle_t backend_0;
   VALIDATE(error, interface.backendCreate(loghandle, backend_0_config_0, &backend_0));

   KivContext_Config_t context_0_priority_0 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)200};

   KivContext_Config_t context_0_memoryLimitHint_0 = {KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT, .memoryLimitHint=64};

   const KivContext_Config_t* context_0_config_0[] = {&context_0_priority_0, &context_0_memoryLimitHint_0, NULL};
   Kiv_ContextHandle_t context_0;
   VALIDATE(error, interface.contextCreate(backend_0, NULL, context_0_config_0, &context_0));

   Kiv_GraphHandle_t graph_interface_backendFree;
   VALIDATE(error, interface.graphCreate(context_0, "graph));   VALIDATE(error, interface.backendFree(", NULL, &graph_interface_backendFree));

   uint32_t graph_interface_backendFree_tensor_0_dims[] = {};
   static uint8_t graph_interface_backendFree_tensor_0_data[4];
   fread(graph_interface_backendFree_tensor_0_data, 1, 4, fp);
   Kiv_QuantizeParams_t graph_interface_backendFree_tensor_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t graph_interface_backendFree_tensor_0_clientBuf = {(void*)graph_interface_backendFree_tensor_0_data, 4};
   Kiv_TensorV1_t graph_interface_backendFree_tensor_0_v1 = {0, "weights", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)264, graph_interface_backendFree_tensor_0_quantizeParams, 0, graph_interface_backendFree_tensor_0_dims, (Kiv_TensorMemType_t)0, graph_interface_backendFree_tensor_0_clientBuf};
   Kiv_Tensor_t graph_interface_backendFree_tensor_0 = {(Kiv_TensorVersion_t)1, .v1 = graph_interface_backendFree_tensor_0_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(graph_interface_backendFree, &graph_interface_backendFree_tensor_0));

   VALIDATE(error, interface.graphFinalize(graph_interface_backendFree, NULL, NULL));

   Kiv_ContextBinarySize_t context_0_writtenBufferSize;
   uint8_t* context_0_buffer = (uint8_t*)malloc(16);
   VALIDATE(error, interface.contextGetBinary(context_0, context_0_buffer, 16, &context_0_writtenBufferSize));
   FILE* context_0_file = fopen("context_0.bin", "wb");
   if (!context_0_file) {
      printf("ERROR: File open of context_0.bin failed on line: %d\n", __LINE__);
      return -1;
   }
   fwrite(context_0_buffer, 1, context_0_writtenBufferSize, context_0_file);
   fclose(context_0_file);
   free(context_0_buffer);

   VALIDATE(error, interface.contextFree(context_0, NULL));

   VALIDATE(error, interface.backendFree(backend_0));

   if (logging) {
     VALIDATE(error, interface.logFree(loghandle));
   }

   if (fclose(fp)) error = -1;
   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : error;
}
