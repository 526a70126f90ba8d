#pragma once

#include "recording/program.h"

namespace kiv::recording {

// Calls the function of the table with the arguments and returns its status.
// The slot must not be null.
Kiv_ErrorHandle_t invoke(const KivInterface_Implementation_t& table,
                         const Arguments& arguments);

// Whether the table has the function.
bool hasFunction(const KivInterface_Implementation_t& table,
                 const format::Function& function);

}  // namespace kiv::recording
