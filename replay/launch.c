/*
 * Runs the recorded program, whose main is called recordedMain here, in the
 * recording's directory on the backend's library. Before the program's first
 * call it makes sure that the data file and the library fit the recording.
 *
 * The program holds the records of all calls in local variables, so it gets a
 * stack that fits its size. It runs in a thread of its own for that: a raised
 * stack limit of the process would also be the size of the stacks of all
 * threads that the backend starts.
 */

#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "KivInterface.h"
#include "launch_system.h"
#include "paths.h"
#include "program_facts.h"

int recordedMain(int argc, char** argv);

/* What a status of the launcher's own means. */
enum { kFailed = 1, kUnreadable = 2 };

/*
 * An array takes most stack for its text: 144 bytes for the name of a tensor,
 * which has nine characters or more.
 */
static const uint64_t kStackPerByte = 32;
static const uint64_t kLeastStack = (uint64_t)64 << 20;

typedef struct {
  const char* name;
  size_t offset; /* in the table of functions */
} Function;

static const Function kFunctions[] = {
#define FUNCTION(name) {#name, offsetof(KivInterface_Implementation_t, name)},
    RECORDED_FUNCTIONS(FUNCTION)
#undef FUNCTION
        {NULL, 0}};
static const Function kLogFunctions[] = {
    {"logCreate", offsetof(KivInterface_Implementation_t, logCreate)},
    {"logFree", offsetof(KivInterface_Implementation_t, logFree)},
    {NULL, 0}};

/* What the library lists. */
static const KivInterface_t** providers;
static uint32_t providerCount;

/* The library's own function has been called by then. */
Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  *providerList = providers;
  *numProviders = providerCount;
  return 0;
}

static int refuse(const char* reason) {
  fprintf(stderr, "%s: %s\n", BACKEND_LIBRARY, reason);
  return kFailed;
}

/* Returns 0, or the program's exit status. */
static int askForProviders(KivInterface_GetProvidersFn_t getProviders) {
  if (!getProviders)
    return refuse("the library has no KivInterface_getProviders");
  const Kiv_ErrorHandle_t status = getProviders(&providers, &providerCount);
  if (status != 0) {
    fprintf(stderr, "%s: the library refuses to list its providers with %u\n",
            BACKEND_LIBRARY, (unsigned)status);
    return kFailed;
  }
  if (!providers || providerCount == 0 || !providers[0])
    return refuse("the library lists no providers");
  return 0;
}

static int checkFunctions(const Function* function) {
  const char* table = (const char*)&providers[0]->KIV_INTERFACE_VER_NAME;
  for (; function->name; ++function) {
    void (*entry)(void);
    memcpy(&entry, table + function->offset, sizeof(entry));
    if (entry) continue;
    fprintf(stderr, "%s: the backend lacks %s, which the recording calls\n",
            BACKEND_LIBRARY, function->name);
    return kFailed;
  }
  return 0;
}

static int checkBackend(int argc) {
  void* library = openLibrary(BACKEND_LIBRARY);
  if (!library) return refuse(libraryError());
  int status = askForProviders(getProvidersOf(library));
  if (status == 0) status = checkFunctions(kFunctions);
  /* Every argument of the program turns on the log, or ends it. */
  if (status == 0 && argc > 1) status = checkFunctions(kLogFunctions);
  return status;
}

/* A program that was changed by hand may read what cannot be foreseen. */
static int checkDataFile(void) {
#ifdef RECORDED_DATA_FILE
  const int64_t size = fileSize(RECORDED_DATA_FILE);
  if (size < 0) return 0; /* The program says that there is none. */
  if (size < RECORDED_DATA_LEAST || size > RECORDED_DATA_MOST) {
    fprintf(stderr,
            "%s: the data file is too %s: the calls read %" PRId64
            " bytes, it has %" PRId64 "\n",
            RECORDED_DATA_FILE, size < RECORDED_DATA_LEAST ? "short" : "long",
            (int64_t)RECORDED_DATA_LEAST, size);
    return kUnreadable;
  }
#endif
  return 0;
}

/* A smaller stack may do where the system refuses the wanted one. */
static int runWithLargeStack(Run* program) {
  uint64_t stackSize = kLeastStack + kStackPerByte * RECORDED_PROGRAM_SIZE;
  for (; stackSize >= kLeastStack / 8; stackSize /= 2)
    if (runWithStack(program, (size_t)stackSize)) return 1;
  return 0;
}

/*
 * Where a process has only eight bits for its status, a code such as 0x1400
 * would come out as success.
 */
static int exitStatus(int status) {
  return status != 0 && (status & 0xff) == 0 ? 1 : status;
}

int main(int argc, char** argv) {
  if (!changeDirectory(RECORDING_DIRECTORY)) {
    perror(RECORDING_DIRECTORY);
    return kUnreadable;
  }
  int status = checkDataFile();
  if (status == 0) status = checkBackend(argc);
  if (status != 0) return status;
  Run program = {recordedMain, argc, argv, 1};
  if (!runWithLargeStack(&program)) {
    fprintf(stderr, "No thread could be started for the recorded program\n");
    return kFailed;
  }
  return exitStatus(program.status);
}
