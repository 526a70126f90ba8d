#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace kiv::session {

// A name with its hash, which is made once however many tables are asked:
//
//   const HashedText name("conv_0");
//   if (!variables.contains(name)) counters.emplace(HashedString(name), 0);
//
// Nobody can choose names that make tables slow who could not make them long.
// From any thread.
struct HashedText {
  explicit HashedText(std::string_view characters)
      : text(characters), hash(hashOf(characters)) {}

  // Eight bytes at a step, the last of which overlap those before.
  static std::size_t hashOf(std::string_view text) noexcept {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;
    constexpr std::size_t kStep = sizeof(std::uint64_t);
    std::uint64_t hash = text.size() * kOdd;
    const auto mix = [&hash](std::uint64_t word) {
      hash = (hash ^ word) * kOdd;
      hash ^= hash >> 32;
    };
    if (text.size() < kStep) {
      std::uint64_t word = 0;
      for (const char c : text)
        word = word << 8 | static_cast<unsigned char>(c);
      mix(word);
      return hash;
    }
    const std::size_t last = text.size() - kStep;
    for (std::size_t at = 0; at < last; at += kStep) mix(wordAt(text, at));
    mix(wordAt(text, last));
    return hash;
  }
  static std::uint64_t wordAt(std::string_view text, std::size_t at) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof(word));
    return word;
  }

  std::string_view text;
  std::size_t hash;
};

// The same as the key of a table, found by either.
struct HashedString {
  explicit HashedString(const HashedText& name)
      : text(name.text), hash(name.hash) {}

  std::string text;
  std::size_t hash;
};

struct HashOfText {
  using is_transparent = void;
  std::size_t operator()(const HashedText& name) const noexcept {
    return name.hash;
  }
  std::size_t operator()(const HashedString& name) const noexcept {
    return name.hash;
  }
};

struct SameText {
  using is_transparent = void;
  template <typename Left, typename Right>
  bool operator()(const Left& left, const Right& right) const noexcept {
    return left.hash == right.hash && left.text == right.text;
  }
};

}  // namespace kiv::session
