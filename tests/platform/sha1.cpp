#include "platform/sha1.h"

#include <bit>

namespace kiv::test {
namespace {

constexpr std::size_t kBlock = 64;
using State = std::array<std::uint32_t, 5>;

// A one bit, zeros, and the length in bits fill up the last block.
void pad(std::vector<std::uint8_t>& message) {
  const std::uint64_t bits = message.size() * 8;
  message.push_back(0x80);
  while (message.size() % kBlock != kBlock - 8) message.push_back(0);
  for (int shift = 56; shift >= 0; shift -= 8)
    message.push_back(static_cast<std::uint8_t>(bits >> shift));
}

std::array<std::uint32_t, 80> schedule(const std::uint8_t* block) {
  std::array<std::uint32_t, 80> words{};
  for (std::size_t i = 0; i < kBlock; ++i)
    words[i / 4] = words[i / 4] << 8 | block[i];
  for (std::size_t i = 16; i < words.size(); ++i) {
    words[i] = std::rotl(
        words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  }
  return words;
}

std::uint32_t roundValue(std::size_t i, const State& s) {
  const std::uint32_t b = s[1], c = s[2], d = s[3];
  if (i < 20) return ((b & c) | (~b & d)) + 0x5A827999;
  if (i < 40) return (b ^ c ^ d) + 0x6ED9EBA1;
  if (i < 60) return ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDC;
  return (b ^ c ^ d) + 0xCA62C1D6;
}

void mix(State& state, const std::uint8_t* block) {
  const auto words = schedule(block);
  State s = state;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::uint32_t next =
        std::rotl(s[0], 5) + roundValue(i, s) + s[4] + words[i];
    s = {next, s[0], std::rotl(s[1], 30), s[2], s[3]};
  }
  for (std::size_t i = 0; i < s.size(); ++i) state[i] += s[i];
}

}  // namespace

std::array<std::uint8_t, 20> sha1(std::vector<std::uint8_t> message) {
  State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
  pad(message);
  for (std::size_t at = 0; at < message.size(); at += kBlock)
    mix(state, message.data() + at);
  std::array<std::uint8_t, 20> digest{};
  for (std::size_t i = 0; i < digest.size(); ++i)
    digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - i % 4 * 8));
  return digest;
}

}  // namespace kiv::test
