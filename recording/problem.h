#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kiv::recording {

enum class Severity : std::uint8_t {
  // The recording can be used; a person may want to know.
  kNote,
  // A text can be read in more than one way; one was taken.
  kAmbiguous,
  // The recording, or the part of it that is named, cannot be used.
  kError
};

// What is wrong with a recording, where, and what was expected there.
//
//   saver_output.c:81:12: error: expected a name of type Kiv_Tensor_t, found
//   "grap"
//
// A value: copy and keep it as long as you like.
struct Problem {
  Severity severity = Severity::kError;
  std::string file;
  // Both count from 1; 0 where the problem is the whole file's.
  std::uint64_t line = 0;
  std::uint64_t column = 0;
  // What a reader wanted there or what happened, in words.
  std::string message;
  // The text found, shortened; empty where there is none to show.
  std::string found;
};

std::string_view nameOf(Severity severity);

// One line without its end.
std::string toString(const Problem& problem);

// A text as it can be shown on one line: at most 60 bytes, control characters
// escaped.
std::string shortened(std::string_view text);

}  // namespace kiv::recording
