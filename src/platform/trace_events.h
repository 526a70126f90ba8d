#pragma once

namespace kiv::platform {

// The system's own tracing, for messages that the printer shows. Costs next to
// nothing while nobody listens.
void traceMessage(const char* text);

}  // namespace kiv::platform
