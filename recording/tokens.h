#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "format/identifiers.h"
#include "recording/blanks.h"

// The tokens of the recorded program, with the blanks and comments before them,
// for the parsers that derive from it. One thread at a time.
namespace kiv::recording {

inline constexpr std::array<bool, 256> kIsIdentifier = [] {
  std::array<bool, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i)
    table[i] = format::isIdentifierCharacter(static_cast<char>(i));
  return table;
}();

inline bool isIdentifier(char c) {
  return kIsIdentifier[static_cast<unsigned char>(c)];
}

inline std::string_view between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

class Tokens {
 public:
  // How far a failed attempt came, and what was expected there.
  const char* failedAt() const { return failedAt_; }
  std::string_view expected() const { return expected_; }

 protected:
  static constexpr std::string_view kStatement = "a statement of a recording";

  explicit Tokens(std::string_view text)
      : begin_(text.data()), end_(text.data() + text.size()) {}

  // Each goes behind its token, or notes the failure and returns false.
  bool take(char c) {
    if (at_ == end_ || *at_ != c) return takeBehindBlanks(c);
    ++at_;
    return true;
  }
  bool takeWord(std::string_view word);
  // The lead of a union's member, with any blanks in it and around.
  bool takeLead(std::string_view lead);
  bool identifier(std::string_view& name);
  bool unsignedNumber(std::uint64_t& number);
  // Goes behind NULL if it stands right here; notes no failure.
  bool takeNull();

  // Behind blanks and comments. A comment with a quote in it is more likely a
  // text's, so it is no blank.
  void skip();
  // Notes the failure unless another attempt came further.
  bool fail(std::string_view expected);
  void forgetFailure() {
    failedAt_ = nullptr;
    expected_ = kStatement;
  }

  const char* begin_;
  const char* end_;
  const char* at_ = nullptr;

 private:
  bool takeBehindBlanks(char c);

  const char* failedAt_ = nullptr;
  std::string_view expected_;
};

}  // namespace kiv::recording
