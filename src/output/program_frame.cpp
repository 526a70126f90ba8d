#include "output/program_frame.h"

#include <array>

#include "KivInterface.h"
#include "output/literals.h"

namespace kiv::output {
namespace {

constexpr std::array<std::string_view, 3> kGpuHeaders = {
    "GPU/KivGpuBackend.h", "GPU/KivGpuGraph.h", "GPU/KivGpuContext.h"};

constexpr std::string_view kRule =
    "//"
    "=========================================================================="
    "="
    "===\n";

constexpr std::string_view kNotice = R"(//
// A recording of calls of the Kiv inference API, written by the Saver)";

constexpr std::string_view kInstructions = R"(.
// Compile it as C with the API's headers and link it with a backend library;
// run it in the directory of its data file to make the same calls again.
//
)";

constexpr std::string_view kIncludes = R"(
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KivInterface.h"
)";

// The error line prints "error" whatever `res` is, and "loghandle=" has no
// blank: both on purpose, scripts compare the text.
constexpr std::string_view kUpToDataFileName = R"(
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

   FILE* fp = fopen(")";

constexpr std::string_view kBetweenDataFileNames = R"(", "rb");
   if (!fp) {
     error = -1;
     printf("ERROR! Could not open )";

constexpr std::string_view kBehindDataFileName =
    R"(, ensure this file is in the current working directory when executing this program.\n");
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
)";

constexpr std::string_view kFooter = R"(   if (logging) {
     VALIDATE(error, interface.logFree(loghandle));
   }

   if (fclose(fp)) error = -1;
   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : error;
}
)";

}  // namespace

std::span<const std::string_view> headersOfBackend(std::uint32_t backendId) {
  if (backendId == KIV_BACKEND_ID_GPU) return kGpuHeaders;
  return {};
}

std::string programHeader(std::span<const std::string_view> includes,
                          std::string_view dataFileName,
                          std::string_view timeStamp) {
  std::string text;
  const auto add = [&text](auto... pieces) { ((text += pieces), ...); };
  add(kRule, kNotice);
  if (!timeStamp.empty()) add(" on ", timeStamp);
  add(kInstructions, kRule, kIncludes);
  for (const std::string_view header : includes)
    add("#include ", quoted(header), "\n");
  add(kUpToDataFileName, dataFileName, kBetweenDataFileNames, dataFileName,
      kBehindDataFileName);
  return text;
}

std::string_view programFooter() { return kFooter; }

}  // namespace kiv::output
