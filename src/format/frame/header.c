//==============================================================================
//
// A recording of calls of the Kiv inference API, written by the Saver $NOTICE$.
// Compile it as C with the API's headers and link it with a backend library;
// run it in the directory of its data file to make the same calls again.
//
//==============================================================================

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"
// $HEADERS$

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

   FILE* fp = fopen("$DATA_FILE$", "rb");
   if (!fp) {
     error = -1;
     printf("ERROR! Could not open $DATA_FILE$, ensure this file is in the current working directory when executing this program.\n");
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
