#include "scratch_directory.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr const char* kMemoryDirectory = "/dev/shm";

std::filesystem::path directoryFor(ScratchDirectory::Place place) {
  if (place == ScratchDirectory::Place::kMemory &&
      access(kMemoryDirectory, W_OK | X_OK) == 0)
    return kMemoryDirectory;
  return std::filesystem::temp_directory_path();
}

}  // namespace

ScratchDirectory::ScratchDirectory(Place place)
    : path_((directoryFor(place) / "kiv-ort-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr)
    throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                  "cannot make a directory like " + path_);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace kiv::ort
