#pragma once

namespace kiv::recording {

// White space as C knows it.
inline bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' ||
         c == '\v';
}

}  // namespace kiv::recording
