#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "kiv_recording/system.h"

namespace kiv::tool {

bool isErrorTerminal() { return isatty(STDERR_FILENO) == 1; }

std::vector<std::string> utf8Arguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void useBinaryOutput() {}

void becomeProgramBeside(const std::string& name,
                         const std::vector<std::string>& arguments) {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return;
  std::string path = self.parent_path() / name;
  std::vector<std::string> words = {path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  std::fflush(nullptr);
  execv(path.c_str(), pointers.data());
}

}  // namespace kiv::tool
