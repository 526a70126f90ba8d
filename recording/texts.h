#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "recording/recording.h"

namespace kiv::recording {

// What a recorder puts behind a name that is taken: "_0", "_0_12" and the like,
// or nothing.
bool isCounters(std::string_view text);

// Statements whose texts hold quotes, by the offsets of their first characters,
// may be read whole in several ways: {"a", "b", "c", "d", 0, ...} has three
// texts. The reading is taken that the rest of the recording confirms: an
// operation's variable comes of its name, and names are named again; else the
// one whose texts end first. Enters the choices into `readings` and returns a
// problem for each.
std::vector<Problem> chooseReadings(const Recording& recording,
                                    std::span<const std::uint64_t> statements,
                                    Recording::Readings& readings);

}  // namespace kiv::recording
