#ifndef ONNX_CLIENT_PROFILE_EVENTS_H
#define ONNX_CLIENT_PROFILE_EVENTS_H

#include "library_loader.h"

namespace onnx_client {

// Prints the events of a profile and those below them, a line each.
void listEvents(const Api& api, Kiv_ProfileHandle_t profile);

}  // namespace onnx_client

#endif
