#include "platform/trace_events.h"

namespace kiv::platform {

// This system has no probes.
void traceMessage(const char*) {}

}  // namespace kiv::platform
