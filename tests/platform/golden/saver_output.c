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

   Kiv_ContextHandle_t context_0;
   VALIDATE(error, interface.contextCreate(backend_0, NULL, NULL, &context_0));

   Kiv_GraphHandle_t example;
   VALIDATE(error, interface.graphCreate(context_0, "example", NULL, &example));

   uint32_t example_tensor_0_dims[] = {1, 3};
   Kiv_QuantizeParams_t example_tensor_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t example_tensor_0_clientBuf = {NULL, 0};
   Kiv_TensorV1_t example_tensor_0_v1 = {0, "x", (Kiv_TensorType_t)0, 0, (Kiv_DataType_t)562, example_tensor_0_quantizeParams, 2, example_tensor_0_dims, (Kiv_TensorMemType_t)0, example_tensor_0_clientBuf};
   Kiv_Tensor_t example_tensor_0 = {(Kiv_TensorVersion_t)1, .v1 = example_tensor_0_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(example, &example_tensor_0));

   uint32_t example_tensor_1_dims[] = {3, 2};
   Kiv_QuantizeParams_t example_tensor_1_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static float example_tensor_1_data[6];
   fread(example_tensor_1_data, 4, 6, fp);
   Kiv_ClientBuffer_t example_tensor_1_clientBuf = {(void*)example_tensor_1_data, 24};
   Kiv_TensorV1_t example_tensor_1_v1 = {0, "w", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)562, example_tensor_1_quantizeParams, 2, example_tensor_1_dims, (Kiv_TensorMemType_t)0, example_tensor_1_clientBuf};
   Kiv_Tensor_t example_tensor_1 = {(Kiv_TensorVersion_t)1, .v1 = example_tensor_1_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(example, &example_tensor_1));

   uint32_t example_tensor_2_dims[] = {1, 2};
   Kiv_QuantizeParams_t example_tensor_2_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t example_tensor_2_clientBuf = {NULL, 0};
   Kiv_TensorV1_t example_tensor_2_v1 = {0, "y", (Kiv_TensorType_t)1, 0, (Kiv_DataType_t)562, example_tensor_2_quantizeParams, 2, example_tensor_2_dims, (Kiv_TensorMemType_t)0, example_tensor_2_clientBuf};
   Kiv_Tensor_t example_tensor_2 = {(Kiv_TensorVersion_t)1, .v1 = example_tensor_2_v1};
   VALIDATE(error, interface.tensorCreateGraphTensor(example, &example_tensor_2));

   Kiv_Param_t* product_0_params = NULL;
   uint32_t product_0_input_0_dims[] = {1, 3};
   Kiv_QuantizeParams_t product_0_input_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t product_0_input_0_clientBuf = {NULL, 0};
   Kiv_TensorV1_t product_0_input_0_v1 = {example_tensor_0.v1.id, "x", (Kiv_TensorType_t)0, 0, (Kiv_DataType_t)562, product_0_input_0_quantizeParams, 2, product_0_input_0_dims, (Kiv_TensorMemType_t)0, product_0_input_0_clientBuf};
   Kiv_Tensor_t product_0_input_0 = {(Kiv_TensorVersion_t)1, .v1 = product_0_input_0_v1};
   uint32_t product_0_input_1_dims[] = {3, 2};
   Kiv_QuantizeParams_t product_0_input_1_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t product_0_input_1_clientBuf = {NULL, 0};
   Kiv_TensorV1_t product_0_input_1_v1 = {example_tensor_1.v1.id, "w", (Kiv_TensorType_t)4, 0, (Kiv_DataType_t)562, product_0_input_1_quantizeParams, 2, product_0_input_1_dims, (Kiv_TensorMemType_t)0, product_0_input_1_clientBuf};
   Kiv_Tensor_t product_0_input_1 = {(Kiv_TensorVersion_t)1, .v1 = product_0_input_1_v1};
   Kiv_Tensor_t product_0_inputs[] = {product_0_input_0, product_0_input_1};
   uint32_t product_0_output_0_dims[] = {1, 2};
   Kiv_QuantizeParams_t product_0_output_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   Kiv_ClientBuffer_t product_0_output_0_clientBuf = {NULL, 0};
   Kiv_TensorV1_t product_0_output_0_v1 = {example_tensor_2.v1.id, "y", (Kiv_TensorType_t)1, 0, (Kiv_DataType_t)562, product_0_output_0_quantizeParams, 2, product_0_output_0_dims, (Kiv_TensorMemType_t)0, product_0_output_0_clientBuf};
   Kiv_Tensor_t product_0_output_0 = {(Kiv_TensorVersion_t)1, .v1 = product_0_output_0_v1};
   Kiv_Tensor_t product_0_outputs[] = {product_0_output_0};
   Kiv_OpConfigV1_t product_0_v1 = {"product", "kiv", "MatMul", 0, product_0_params, 2, product_0_inputs, 1, product_0_outputs};
   Kiv_OpConfig_t product_0 = {(Kiv_OpConfigVersion_t)1, .v1 = product_0_v1};
   VALIDATE(error, interface.graphAddNode(example, product_0));

   VALIDATE(error, interface.graphFinalize(example, NULL, NULL));

   uint32_t example_inputTensor_0_0_dims[] = {1, 3};
   Kiv_QuantizeParams_t example_inputTensor_0_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static float example_inputTensor_0_0_data[3];
   fread(example_inputTensor_0_0_data, 4, 3, fp);
   Kiv_ClientBuffer_t example_inputTensor_0_0_clientBuf = {(void*)example_inputTensor_0_0_data, 12};
   Kiv_TensorV1_t example_inputTensor_0_0_v1 = {example_tensor_0.v1.id, "x", (Kiv_TensorType_t)0, 0, (Kiv_DataType_t)562, example_inputTensor_0_0_quantizeParams, 2, example_inputTensor_0_0_dims, (Kiv_TensorMemType_t)0, example_inputTensor_0_0_clientBuf};
   Kiv_Tensor_t example_inputTensor_0_0 = {(Kiv_TensorVersion_t)1, .v1 = example_inputTensor_0_0_v1};
   uint32_t example_outputTensor_0_0_dims[] = {1, 2};
   Kiv_QuantizeParams_t example_outputTensor_0_0_quantizeParams = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
   static float example_outputTensor_0_0_data[2];
   fread(example_outputTensor_0_0_data, 4, 2, fp);
   Kiv_ClientBuffer_t example_outputTensor_0_0_clientBuf = {(void*)example_outputTensor_0_0_data, 8};
   Kiv_TensorV1_t example_outputTensor_0_0_v1 = {example_tensor_2.v1.id, "y", (Kiv_TensorType_t)1, 0, (Kiv_DataType_t)562, example_outputTensor_0_0_quantizeParams, 2, example_outputTensor_0_0_dims, (Kiv_TensorMemType_t)0, example_outputTensor_0_0_clientBuf};
   Kiv_Tensor_t example_outputTensor_0_0 = {(Kiv_TensorVersion_t)1, .v1 = example_outputTensor_0_0_v1};
   Kiv_Tensor_t example_inputTensors_0[] = {example_inputTensor_0_0};
   Kiv_Tensor_t example_outputTensors_0[] = {example_outputTensor_0_0};
   VALIDATE(error, interface.graphExecute(example, example_inputTensors_0, 1, example_outputTensors_0, 1, NULL, NULL));

   VALIDATE(error, interface.contextFree(context_0, NULL));

   VALIDATE(error, interface.backendFree(backend_0));

   if (logging) {
     VALIDATE(error, interface.logFree(loghandle));
   }

   if (fclose(fp)) error = -1;
   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : error;
}
