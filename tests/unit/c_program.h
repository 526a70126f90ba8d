#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/files.h"

namespace kiv::test {

// What a command prints; a failure leaves `succeeded` false.
inline std::string outputOf(const std::string& command, bool& succeeded) {
  std::string output;
  std::FILE* pipe = popen(command.c_str(), "r");
  succeeded = pipe != nullptr;
  if (pipe == nullptr) return output;
  for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  succeeded = pclose(pipe) == 0;
  return output;
}

// Compiles main's statements as C and runs them.
inline std::string runC(const std::string& statements, bool& succeeded) {
  const TempDirectory directory;
  const std::string base = (directory.path() / "program").string();
  writeFile(base + ".c",
            "#include <stdio.h>\n#include <string.h>\nint main(void) {\n" +
                statements + "return 0;\n}\n");
  return outputOf("cc -std=c99 -o " + base + " " + base + ".c && " + base,
                  succeeded);
}

}  // namespace kiv::test
