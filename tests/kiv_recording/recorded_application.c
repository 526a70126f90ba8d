// recorded_application BACKEND
//
// An application that knows nothing of recordings. It has two sessions, forks
// three workers with one each, changes its directory, begins anew by exec and
// ends with 5. Its standard output is the number of sessions.

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "KivInterface.h"

static void fail(const char* what) {
  fprintf(stderr, "%s\n", what);
  exit(3);
}

static void haveSession(const char* backend) {
  void* library = dlopen(backend, RTLD_NOW);
  if (library == NULL) fail(dlerror());
  KivInterface_GetProvidersFn_t getProviders = NULL;
  void* symbol = dlsym(library, "KivInterface_getProviders");
  memcpy(&getProviders, &symbol, sizeof symbol);
  const KivInterface_t** providers = NULL;
  uint32_t count = 0;
  Kiv_BackendHandle_t handle = NULL;
  if (getProviders == NULL || getProviders(&providers, &count) != KIV_SUCCESS ||
      count == 0)
    fail("no provider");
  const KivInterface_Implementation_t* api =
      &providers[0]->KIV_INTERFACE_VER_NAME;
  if (api->backendCreate(NULL, NULL, &handle) != KIV_SUCCESS ||
      api->backendFree(handle) != KIV_SUCCESS)
    fail("no session");
  dlclose(library);
  printf("session\n");
  fflush(stdout);
}

int main(int argc, char** argv) {
  haveSession(argv[1]);
  haveSession(argv[1]);
  for (int i = 0; i < 3; ++i) {
    if (fork() == 0) {
      haveSession(argv[1]);
      _exit(0);
    }
  }
  while (wait(NULL) > 0) {
  }
  if (chdir("/") != 0) fail("no root");
  if (argc < 3) execl(argv[0], argv[0], argv[1], "again", (char*)NULL);
  return 5;
}
