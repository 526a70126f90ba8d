#pragma once

#include <vector>

#include "Saver/KivSaver.h"
#include "support/dynamic_library.h"

namespace kiv::test {

// Records of the library's own options. Texts belong to the caller.
using Option = KivSaver_Config_t;

Option directoryOption(const char* path);
Option filesOption(const char* model, const char* data);
// One whose value is a flag or a number.
Option numberOption(int option, uint32_t value);
inline Option timeStampOption(bool on) { return numberOption(1, on ? 1 : 0); }
inline Option backendOption(uint32_t id) { return numberOption(2, id); }
inline Option headerOption(bool on) { return numberOption(4, on ? 1 : 0); }
inline Option footerOption(bool on) { return numberOption(5, on ? 1 : 0); }

// Calls KivSaver_initialize of a library.
Kiv_ErrorHandle_t setOptions(const DynamicLibrary& library,
                             const std::vector<Option>& options);

}  // namespace kiv::test
