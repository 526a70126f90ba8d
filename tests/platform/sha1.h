#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace kiv::test {

std::array<std::uint8_t, 20> sha1(std::vector<std::uint8_t> message);

}  // namespace kiv::test
