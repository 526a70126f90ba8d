#include "ort_library.h"

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <mutex>

#include "failure.h"
#include "log.h"

namespace kiv::ort {
namespace {

constexpr const char* kPathVariable = "KIV_ONNXRUNTIME";
constexpr std::array<const char*, 3> kSystemNames = {
    "libonnxruntime.so.1", "libonnxruntime.so", "libonnxruntime.so.1.16.3"};

constexpr int kArenaAllocator = 1;
constexpr int kDefaultMemory = 0;
constexpr int kWarning = 2;

[[noreturn]] void throwNoLibrary(const std::string& why) {
  throw Failure(KIV_BACKEND_ERROR_CANNOT_INITIALIZE, why);
}

void* tryLoad(const char* name) {
  return dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

void* load() {
  const char* path = std::getenv(kPathVariable);
  if (path != nullptr && *path != '\0') {
    void* handle = tryLoad(path);
    if (handle == nullptr) {
      throwNoLibrary(std::string("cannot load ONNX Runtime from ") +
                     kPathVariable + ": " + dlerror());
    }
    return handle;
  }
  for (const char* name : kSystemNames)
    if (void* handle = tryLoad(name)) return handle;
  throwNoLibrary(
      std::string("the system has no libonnxruntime.so; set ") + kPathVariable +
      " to the path of ONNX Runtime's library, which tools/setup.sh fetches");
}

const OrtBase& loadBase() {
  const auto getBase =
      reinterpret_cast<OrtGetBase>(dlsym(load(), kOrtGetBaseName));
  const OrtBase* base = getBase == nullptr ? nullptr : getBase();
  if (base == nullptr)
    throwNoLibrary(std::string("the library of ONNX Runtime has no ") +
                   kOrtGetBaseName);
  if (base->getApi(kOrtApiVersion) == nullptr) {
    throwNoLibrary(std::string("ONNX Runtime ") + base->getVersion() +
                   " is too old, 1." + std::to_string(kOrtApiVersion) +
                   " is needed");
  }
  return *base;
}

// ONNX Runtime's messages belong into the client's log, without its own marks
// of time and place.
void forwardMessage(void*, int severity, const char*, const char*, const char*,
                    const char* message) {
  const KivLog_Level_t level =
      severity > kWarning ? KIV_LOG_LEVEL_ERROR : KIV_LOG_LEVEL_WARN;
  // Errors come back as the status of the call, too.
  if (logLevel() < KIV_LOG_LEVEL_WARN) return;
  log(level, std::string("ONNX Runtime: ") + message);
}

}  // namespace

std::shared_ptr<const OrtLibrary> OrtLibrary::get() {
  static std::mutex mutex;
  static std::weak_ptr<const OrtLibrary> current;
  const std::scoped_lock lock(mutex);
  std::shared_ptr<const OrtLibrary> library = current.lock();
  if (library == nullptr) {
    library = std::make_shared<const OrtLibrary>(loadBase());
    current = library;
  }
  return library;
}

OrtLibrary::OrtLibrary(const OrtBase& base)
    : version_(base.getVersion()),
      functions_(readTable(base.getApi(kOrtApiVersion))) {
  check("CreateEnv", functions_.createEnvWithLogger(forwardMessage, nullptr,
                                                    kWarning, "kiv", &env_));
  check("CreateCpuMemoryInfo", functions_.createCpuMemoryInfo(
                                   kArenaAllocator, kDefaultMemory, &memory_));
}

OrtLibrary::~OrtLibrary() {
  if (memory_ != nullptr) functions_.releaseMemoryInfo(memory_);
  if (env_ != nullptr) functions_.releaseEnv(env_);
}

int OrtLibrary::newestOpset() const {
  constexpr int kOfVersion14 = 18;
  constexpr int kOfVersion15 = 19;
  return version_.starts_with("1.14.") ? kOfVersion14 : kOfVersion15;
}

void OrtLibrary::check(const char* what, OrtStatus* status) const {
  if (status == nullptr) return;
  const std::string message = functions_.getErrorMessage(status);
  functions_.releaseStatus(status);
  throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                std::string("ONNX Runtime, ") + what + ": " + message);
}

}  // namespace kiv::ort
