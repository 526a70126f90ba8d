/*
 * What the launcher asks of the system. Paths are UTF-8.
 */
#ifndef LAUNCH_SYSTEM_H
#define LAUNCH_SYSTEM_H

#include <stddef.h>
#include <stdint.h>

#include "KivInterface.h"

/* 0 on failure. */
int changeDirectory(const char* path);

/* -1 where there is no file. */
int64_t fileSize(const char* path);

/* The library of exactly that path; null on failure. */
void* openLibrary(const char* path);
/* Why openLibrary failed. */
const char* libraryError(void);
/* Null where the library has no such function. */
KivInterface_GetProvidersFn_t getProvidersOf(void* library);

typedef struct {
  int (*main)(int argc, char** argv);
  int argc;
  char** argv;
  int status;
} Run;

/* Runs the program in a thread with a stack of that size; 0 if there is none.
 */
int runWithStack(Run* program, size_t stackSize);

#endif
