#include "support/files.h"

#include <fstream>
#include <random>
#include <sstream>

namespace kiv::test {

namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return std::move(content).str();
}

void writeFile(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

TempDirectory::TempDirectory() {
  std::random_device random;
  do {
    path_ =
        fs::temp_directory_path() / ("kiv_test_" + std::to_string(random()));
  } while (!fs::create_directory(path_));
}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

}  // namespace kiv::test
