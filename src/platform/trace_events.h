#pragma once

namespace kiv::platform {

// Hands a message that the printer shows to the system's own tracing. Costs
// next to nothing while nobody listens. Any thread may call it.
void traceMessage(const char* text);

}  // namespace kiv::platform
