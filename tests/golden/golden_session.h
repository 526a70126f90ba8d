#pragma once

#include <vector>

#include "KivInterface.h"

namespace kiv::test {

// A client's session that is the same every time: each function of the
// interface that a recording shows, each option of each config family, each
// form of tensor, quantization and parameter. Contexts and graphs get custom
// configs of the GPU backend.
//
// Returns the codes of the calls in their order. Handles that a call does not
// give stay null, and the session goes on.
std::vector<Kiv_ErrorHandle_t> runGoldenSession(
    const KivInterface_Implementation_t& api);

}  // namespace kiv::test
