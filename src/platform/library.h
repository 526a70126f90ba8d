#pragma once

#include <string>

// Other libraries, and the end of the one that this code is in. Any thread may
// call these functions.
//
//   std::string why;
//   void* library = openLibrary("/opt/npu/libNpu.so", why);
//   if (library == nullptr) return why;
//   void* address = findSymbol(library, "KivInterface_getProviders");
namespace kiv::platform {

// Loads a library by its path, or by its name where the system looks for it.
// Null, with the path and the system's words in `why`, when it cannot be
// loaded.
void* openLibrary(const std::string& path, std::string& why);
// Does nothing on Windows, whose loader unloads no library while it unloads the
// one that this code is in.
void closeLibrary(void* library);

// Null when the library has no such symbol.
void* findSymbol(void* library, const char* name);

// Has `action` called when the library that this code is in is unloaded and the
// process goes on, but not at the process's end, when other libraries' exit
// handlers may still call. Called once.
void callAtUnload(void (*action)());

}  // namespace kiv::platform
