// windows.h comes before what needs it.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include <filesystem>

#include "kiv_recording/system.h"

namespace kiv::tool {

bool isErrorTerminal() { return _isatty(_fileno(stderr)) != 0; }

// main's own are in the system's code page, which has not every character.
std::vector<std::string> utf8Arguments(int, char**) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    const std::u8string text = std::filesystem::path(wide[i]).u8string();
    arguments.emplace_back(text.begin(), text.end());
  }
  LocalFree(wide);
  return arguments;
}

void useBinaryOutput() { _setmode(_fileno(stdout), _O_BINARY); }

// What stands beside the command elsewhere is not built for this system.
void becomeProgramBeside(const std::string&, const std::vector<std::string>&) {}

}  // namespace kiv::tool
