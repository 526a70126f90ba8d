#include <unistd.h>

#include "kiv_recording/system.h"

namespace kiv::tool {

bool isErrorTerminal() { return isatty(STDERR_FILENO) == 1; }

std::vector<std::string> utf8Arguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void useBinaryOutput() {}

}  // namespace kiv::tool
