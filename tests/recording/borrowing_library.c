/* Has the entry point from the library that it is linked with only. */

#include "KivInterface.h"

__attribute__((visibility("default"))) void* borrowedEntry(void);

void* borrowedEntry(void) { return (void*)KivInterface_getProviders; }
