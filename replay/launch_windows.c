#include <direct.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <windows.h>

#include "launch_system.h"

enum { kMostCharacters = 32768 };

/* The path with its drive, which stays as it is until the next call; null for
 * one that is too long. */
static const wchar_t* widePath(const char* path) {
  static wchar_t given[kMostCharacters];
  static wchar_t full[kMostCharacters];
  if (MultiByteToWideChar(CP_UTF8, 0, path, -1, given, kMostCharacters) == 0)
    return NULL;
  const DWORD length = GetFullPathNameW(given, kMostCharacters, full, NULL);
  return length == 0 || length >= kMostCharacters ? NULL : full;
}

int changeDirectory(const char* path) {
  const wchar_t* wide = widePath(path);
  return wide && _wchdir(wide) == 0;
}

int64_t fileSize(const char* path) {
  const wchar_t* wide = widePath(path);
  struct _stat64 facts;
  return wide && _wstat64(wide, &facts) == 0 ? facts.st_size : -1;
}

/* Libraries that it needs are looked for beside it. */
void* openLibrary(const char* path) {
  const wchar_t* wide = widePath(path);
  return wide ? LoadLibraryExW(wide, NULL, LOAD_WITH_ALTERED_SEARCH_PATH)
              : NULL;
}

const char* libraryError(void) {
  static char text[64];
  snprintf(text, sizeof(text), "cannot be opened (error %lu)", GetLastError());
  return text;
}

KivInterface_GetProvidersFn_t getProvidersOf(void* library) {
  const FARPROC symbol = GetProcAddress(library, "KivInterface_getProviders");
  KivInterface_GetProvidersFn_t function;
  memcpy(&function, &symbol, sizeof(function));
  return function;
}

static DWORD WINAPI run(LPVOID argument) {
  Run* program = argument;
  program->status = program->main(program->argc, program->argv);
  return 0;
}

int runWithStack(Run* program, size_t stackSize) {
  HANDLE thread = CreateThread(NULL, stackSize, run, program,
                               STACK_SIZE_PARAM_IS_A_RESERVATION, NULL);
  if (!thread) return 0;
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return 1;
}
