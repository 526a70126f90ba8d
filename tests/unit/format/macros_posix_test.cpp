#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "format/identifiers.h"

namespace kiv::format::test {
namespace {

// What a command prints, or nothing if it fails.
std::string outputOf(const std::string& command) {
  std::string output;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {};
  for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  return pclose(pipe) == 0 ? output : "";
}

// A variable with the name of a macro is not what it seems, and may not
// compile.
TEST(ReservedIdentifierTest, CoversTheMacrosOfTheProgramsHeaders) {
  std::string program = "printf '";
  for (const char* header :
       {"stdio.h", "stdlib.h", "string.h", "KivInterface.h",
        "GPU/KivGpuBackend.h", "GPU/KivGpuGraph.h", "GPU/KivGpuContext.h"})
    program += "#include <" + std::string(header) + ">\\n";
  for (const std::string compiler :
       {"gcc", "clang", "x86_64-w64-mingw32-gcc"}) {
    if (outputOf("command -v " + compiler).empty()) continue;
    for (const char* options : {"", "-std=c99", "-std=c11 -O2 -D_GNU_SOURCE",
                                "-std=gnu2x -D_FORTIFY_SOURCE=2 -O2"}) {
      std::istringstream macros(
          outputOf(program + "' | " + compiler + ' ' + options +
                   " -dM -E -I" KIV_INCLUDE_DIR " -x c -"));
      int count = 0;
      for (std::string define, name, rest; macros >> define >> name; ++count) {
        std::getline(macros, rest);
        if (name.find('(') != std::string::npos) continue;
        EXPECT_TRUE(isReservedIdentifier(name)) << name << ' ' << compiler;
      }
      EXPECT_GT(count, 100) << compiler << ' ' << options;
    }
  }
}

}  // namespace
}  // namespace kiv::format::test
