// A client that ends in the way it is told: host LIBRARY DIRECTORY END.

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "support/files.h"
#include "support/options.h"
#include "support/provider.h"
#include "support/records.h"

namespace {

using kiv::test::DynamicLibrary;
using Api = KivInterface_Implementation_t;

const Api& record(const DynamicLibrary& library, const char* directory) {
  kiv::test::setOptions(library, {kiv::test::directoryOption(directory)});
  const Api& api = kiv::test::interfaceOf(library);
  kiv::test::createObjects(api);
  return api;
}

// Nothing but the recording's own last line may be last, and nobody may hold
// the file.
bool isFinished(const std::string& directory) {
  const std::string path = directory + "/saver_output.c";
  return kiv::test::readFile(path).ends_with("\n}\n") &&
         std::rename(path.c_str(), (path + ".moved").c_str()) == 0;
}

// More often than a process has places for thread-local data, 1,088: the
// library may keep none.
int loadAgainAndAgain(const char* path, const char* directory) {
  constexpr int kTimes = 1200;
  for (int i = 0; i < kTimes; ++i) {
    DynamicLibrary library(path);
    std::thread([&] { record(library, directory); }).join();
  }
  return DynamicLibrary::isLoaded(path) || !isFinished(directory);
}

void exitFromCallback(const char*, KivLog_Level_t, uint64_t, va_list) {
  std::exit(0);
}

std::atomic<bool> isInCall = false;

void stayForever(const char*, KivLog_Level_t, uint64_t, va_list) {
  isInCall = true;
  Sleep(INFINITE);
}

void refusedCall(const Api& api, KivLog_Callback_t callback) {
  Kiv_LogHandle_t logger = nullptr;
  api.logCreate(callback, KIV_LOG_LEVEL_ERROR, &logger);
  api.backendFree(nullptr);
}

int end(const std::string& how, DynamicLibrary& library, const Api& api,
        const char* directory) {
  if (how == "free") {
    library.unload();
    return isFinished(directory) ? 0 : 1;
  }
  if (how == "exit") std::exit(0);
  if (how == "exit-in-callback") refusedCall(api, exitFromCallback);
  if (how == "exit-beside-call") {
    std::thread([&] { refusedCall(api, stayForever); }).detach();
    while (!isInCall) Sleep(1);
    std::exit(0);
  }
  if (how == "exit-in-thread") std::thread([] { std::exit(0); }).join();
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  if (argv[3] == std::string("again"))
    return loadAgainAndAgain(argv[1], argv[2]);
  // The end of the process unloads it, not the object.
  auto* library = new DynamicLibrary(argv[1]);
  return end(argv[3], *library, record(*library, argv[2]), argv[2]);
}
