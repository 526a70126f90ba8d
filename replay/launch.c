/*
 * Runs the recorded program, whose main is called recordedMain here, in the
 * recording's directory.
 *
 * The program holds the records of all calls in local variables, so it gets a
 * stack that fits its size. It runs in a thread of its own for that: a raised
 * stack limit of the process would also be the size of the stacks of all
 * threads that the backend starts.
 */

#include <stddef.h>
#include <stdio.h>

#include "program_size.h"

#ifdef _WIN32
#include <direct.h>
#include <windows.h>
#define chdir _chdir
#else
#include <pthread.h>
#include <unistd.h>
#endif

int recordedMain(int argc, char** argv);

/*
 * An array takes most stack for its text: 144 bytes for the name of a tensor,
 * which has nine characters or more.
 */
static const size_t kStackPerByte = 32;
static const size_t kLeastStack = (size_t)64 << 20;

typedef struct {
  int argc;
  char** argv;
  int status;
} Run;

#ifdef _WIN32

static DWORD WINAPI run(LPVOID argument) {
  Run* program = argument;
  program->status = recordedMain(program->argc, program->argv);
  return 0;
}

static int runWithStack(Run* program, size_t stackSize) {
  HANDLE thread = CreateThread(NULL, stackSize, run, program,
                               STACK_SIZE_PARAM_IS_A_RESERVATION, NULL);
  if (!thread) return 0;
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return 1;
}

#else

static void* run(void* argument) {
  Run* program = argument;
  program->status = recordedMain(program->argc, program->argv);
  return NULL;
}

static int runWithStack(Run* program, size_t stackSize) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return 0;
  pthread_t thread;
  const int started = pthread_attr_setstacksize(&attributes, stackSize) == 0 &&
                      pthread_create(&thread, &attributes, run, program) == 0;
  pthread_attr_destroy(&attributes);
  return started && pthread_join(thread, NULL) == 0;
}

#endif

/* A smaller stack may do where the system refuses the wanted one. */
static int runWithLargeStack(Run* program) {
  size_t stackSize = kLeastStack + kStackPerByte * PROGRAM_SIZE;
  for (; stackSize >= kLeastStack / 8; stackSize /= 2)
    if (runWithStack(program, stackSize)) return 1;
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
  if (chdir(RECORDING_DIRECTORY) != 0) {
    perror(RECORDING_DIRECTORY);
    return 1;
  }
  Run program = {argc, argv, 1};
  if (!runWithLargeStack(&program)) {
    fprintf(stderr, "No thread could be started for the recorded program\n");
    return 1;
  }
  return exitStatus(program.status);
}
