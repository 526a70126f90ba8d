#pragma once

#include <nlohmann/json.hpp>

#include "kiv_recording/relay_answers.h"
#include "recording/recording.h"

// What the verb info says of a recording that was made beside a real backend.
// From the main thread.
namespace kiv::tool {

// On standard output.
void showAnswers(const recording::Recording& recording,
                 const RelayAnswers& answers);

nlohmann::ordered_json jsonOf(const recording::Recording& recording,
                              const RelayAnswers& answers);

}  // namespace kiv::tool
