#pragma once

#include "library_loader.h"

namespace onnx_client {

// Prints the events of a profile and those below them, a line each.
void listEvents(const Api& api, Kiv_ProfileHandle_t profile);

}  // namespace onnx_client
