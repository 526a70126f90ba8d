// The cost of recording beside a program that only writes the same bytes; see
// docs/performance.md.

#include <sys/vfs.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string_view>

#include "timing.h"

namespace {

constexpr const char* kUsage =
    "usage: record_benchmark [--library PATH] [--directory DIR] "
    "[table|million]\n"
    "\n"
    "  table    what calls cost beside writing their bytes (the default)\n"
    "  million  what a tensor costs after a million others\n"
    "  PATH     the library; by default the release build of this tree\n"
    "  DIR      where files are written, on a disk; by default the working\n"
    "           directory\n";

// Memory is faster than any disk's cache, and holes in it are cheap.
void checkIsOnDisk(const std::filesystem::path& directory) {
  constexpr auto kMemory = 0x01021994;
  struct statfs system {};
  if (statfs(directory.c_str(), &system) != 0)
    throw std::runtime_error("There is no directory " + directory.string());
  if (system.f_type == kMemory)
    throw std::runtime_error(directory.string() +
                             " is in memory; name a directory on a disk with "
                             "--directory");
}

}  // namespace

int main(int argc, char** argv) {
  kiv::benchmarks::Settings settings{KIV_SAVER_LIBRARY, "."};
  std::string_view mode = "table";
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--library" && i + 1 < argc) {
      settings.library = argv[++i];
    } else if (argument == "--directory" && i + 1 < argc) {
      settings.directory = argv[++i];
    } else if (argument == "table" || argument == "million") {
      mode = argument;
    } else {
      std::fputs(kUsage, stderr);
      return 2;
    }
  }
  try {
    checkIsOnDisk(settings.directory);
    settings.directory /= "record_benchmark_files";
    // A killed run may have left it.
    std::filesystem::remove_all(settings.directory);
    std::filesystem::create_directory(settings.directory);
    if (mode == "table") {
      printTable(settings);
    } else {
      printMillionTensors(settings);
    }
    std::filesystem::remove_all(settings.directory);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "record_benchmark: %s\n", error.what());
    return 1;
  }
}
