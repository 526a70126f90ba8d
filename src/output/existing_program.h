#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kiv::output {

// Takes each identifier of a program, some of them several times.
using IdentifierVisitor = std::function<void(std::string_view)>;

// Reads a C file and hands out everything in it that looks like an identifier,
// words in comments and texts among them. A file that is not there has none.
void visitIdentifiers(const std::string& path,
                      const IdentifierVisitor& visitor);

}  // namespace kiv::output
