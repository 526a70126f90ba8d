#define _GNU_SOURCE

#include <dlfcn.h>
#include <pthread.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "launch_system.h"

int changeDirectory(const char* path) { return chdir(path) == 0; }

int64_t fileSize(const char* path) {
  struct stat facts;
  return stat(path, &facts) == 0 ? (int64_t)facts.st_size : -1;
}

void* openLibrary(const char* path) {
  return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

const char* libraryError(void) {
  const char* error = dlerror();
  return error ? error : "cannot be opened";
}

KivInterface_GetProvidersFn_t getProvidersOf(void* library) {
  void* symbol = dlsym(library, "KivInterface_getProviders");
  KivInterface_GetProvidersFn_t function;
  memcpy(&function, &symbol, sizeof(function));
  return function;
}

static void* run(void* argument) {
  Run* program = argument;
  program->status = program->main(program->argc, program->argv);
  return NULL;
}

int runWithStack(Run* program, size_t stackSize) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return 0;
  pthread_t thread;
  const int started = pthread_attr_setstacksize(&attributes, stackSize) == 0 &&
                      pthread_create(&thread, &attributes, run, program) == 0;
  pthread_attr_destroy(&attributes);
  return started && pthread_join(thread, NULL) == 0;
}
