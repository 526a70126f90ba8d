#include "data_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::uint64_t kAlignment = 64;

[[noreturn]] void fail(const char* what) {
  throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                std::string("cannot ") + what +
                    " the data of static tensors: " + std::strerror(errno));
}

}  // namespace

DataFile::DataFile() : directory_(ScratchDirectory::Place::kMemory) {
  constexpr int kOwnerOnly = 0600;
  const std::string path = directory() + "/" + kName;
  file_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly);
  if (file_ < 0) fail("keep");
}

DataFile::~DataFile() { close(file_); }

DataPlace DataFile::append(std::span<const std::uint8_t> bytes) {
  const std::uint64_t start =
      (size_ + kAlignment - 1) / kAlignment * kAlignment;
  std::uint64_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        pwrite(file_, bytes.data() + written, bytes.size() - written,
               static_cast<off_t>(start + written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("keep");
    written += static_cast<std::uint64_t>(count);
  }
  size_ = start + bytes.size();
  return {start, bytes.size()};
}

void DataFile::read(const DataPlace& place, void* buffer) const {
  std::uint64_t done = 0;
  while (done < place.size) {
    const ssize_t count =
        pread(file_, static_cast<std::uint8_t*>(buffer) + done,
              place.size - done, static_cast<off_t>(place.offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) fail("read");
    done += static_cast<std::uint64_t>(count);
  }
}

}  // namespace kiv::ort
