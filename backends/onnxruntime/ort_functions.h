#pragma once

// The part of ONNX Runtime's C interface that is in use. Its library brings a
// table of function pointers that only ever grows, so a function is known by
// its slot:
//
//   OrtFunctions functions = readTable(base->getApi(kOrtApiVersion));
//   functions.releaseEnv(env);
//
// Functions that return an OrtStatus return null for success. All may be
// called from any thread; a session may run on several threads at once.

#include <cstddef>
#include <cstdint>

namespace kiv::ort {

struct OrtAllocator;
struct OrtEnv;
struct OrtMemoryInfo;
struct OrtRunOptions;
struct OrtSession;
struct OrtSessionOptions;
struct OrtStatus;
struct OrtTensorInfo;
struct OrtValue;

// The version whose table holds all the slots in use.
inline constexpr std::uint32_t kOrtApiVersion = 14;

struct OrtBase {
  // Null if the library is older than the version.
  const void* (*getApi)(std::uint32_t version);
  // Such as "1.16.3".
  const char* (*getVersion)();
};

// The one function that the library exports.
using OrtGetBase = const OrtBase* (*)();
inline constexpr const char* kOrtGetBaseName = "OrtGetApiBase";

// Severities are 0 verbose, 1 info, 2 warning, 3 error, 4 fatal.
using OrtLogFunction = void (*)(void* argument, int severity,
                                const char* category, const char* logId,
                                const char* location, const char* message);

struct OrtFunctions {
  const char* (*getErrorMessage)(const OrtStatus* status);
  OrtStatus* (*createEnvWithLogger)(OrtLogFunction log, void* argument,
                                    int severity, const char* logId,
                                    OrtEnv** env);
  OrtStatus* (*createSession)(const OrtEnv* env, const char* path,
                              const OrtSessionOptions* options,
                              OrtSession** session);
  OrtStatus* (*createSessionFromArray)(const OrtEnv* env, const void* model,
                                       std::size_t size,
                                       const OrtSessionOptions* options,
                                       OrtSession** session);
  OrtStatus* (*run)(OrtSession* session, const OrtRunOptions* options,
                    const char* const* inputNames,
                    const OrtValue* const* inputs, std::size_t inputCount,
                    const char* const* outputNames, std::size_t outputCount,
                    OrtValue** outputs);
  OrtStatus* (*createSessionOptions)(OrtSessionOptions** options);
  OrtStatus* (*enableProfiling)(OrtSessionOptions* options, const char* prefix);
  OrtStatus* (*createTensorWithData)(const OrtMemoryInfo* memory, void* data,
                                     std::size_t size,
                                     const std::int64_t* dimensions,
                                     std::size_t rank, int elementType,
                                     OrtValue** value);
  OrtStatus* (*isTensor)(const OrtValue* value, int* answer);
  OrtStatus* (*getTensorData)(OrtValue* value, void** data);
  OrtStatus* (*getElementType)(const OrtTensorInfo* info, int* elementType);
  OrtStatus* (*getRank)(const OrtTensorInfo* info, std::size_t* rank);
  OrtStatus* (*getDimensions)(const OrtTensorInfo* info,
                              std::int64_t* dimensions, std::size_t rank);
  OrtStatus* (*getElementCount)(const OrtTensorInfo* info, std::size_t* count);
  OrtStatus* (*getTensorInfo)(const OrtValue* value, OrtTensorInfo** info);
  OrtStatus* (*createCpuMemoryInfo)(int allocator, int memoryType,
                                    OrtMemoryInfo** memory);
  OrtStatus* (*allocatorFree)(OrtAllocator* allocator, void* memory);
  OrtStatus* (*getDefaultAllocator)(OrtAllocator** allocator);
  void (*releaseEnv)(OrtEnv* env);
  void (*releaseStatus)(OrtStatus* status);
  void (*releaseMemoryInfo)(OrtMemoryInfo* memory);
  void (*releaseSession)(OrtSession* session);
  void (*releaseValue)(OrtValue* value);
  void (*releaseTensorInfo)(OrtTensorInfo* info);
  void (*releaseSessionOptions)(OrtSessionOptions* options);
  // Ends the profile that enableProfiling asked for; receives the name of its
  // file, to be given back to the allocator.
  OrtStatus* (*endProfiling)(OrtSession* session, OrtAllocator* allocator,
                             char** fileName);
};

OrtFunctions readTable(const void* table);

}  // namespace kiv::ort
