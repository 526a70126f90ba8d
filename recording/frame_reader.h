#pragma once

#include <string_view>

#include "recording/recording.h"

// The fixed text around the calls, as the recorder writes it and as people
// change it. From any thread.
namespace kiv::recording {

// The header that begins at `begin`, where a "#" or a comment stands; its lines
// are counted from `line`.
Header readHeader(std::string_view text, std::uint64_t begin,
                  std::uint32_t line);

// The footer, whose first statement begins at `begin`.
Footer readFooter(std::string_view text, std::uint64_t begin,
                  std::uint32_t line);

// Whether the text at an offset begins a program's header: comments or blanks
// and then a "#".
bool beginsHeader(std::string_view text, std::uint64_t begin);

// Whether a statement is one of those that end the program.
bool beginsFooter(std::string_view statement);

}  // namespace kiv::recording
