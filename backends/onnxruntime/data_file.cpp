#include "data_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::uint64_t kAlignment = 64;

[[noreturn]] void failData(const char* what) {
  throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                std::string("cannot ") + what +
                    " the data of static tensors: " + std::strerror(errno));
}

}  // namespace

DataFile::DataFile() : file_(memfd_create("kiv_static_data", MFD_CLOEXEC)) {
  if (file_ < 0) failData("keep");
}

DataFile::~DataFile() { close(file_); }

DataPlace DataFile::append(std::span<const std::byte> bytes) {
  const std::uint64_t start =
      (size_ + kAlignment - 1) / kAlignment * kAlignment;
  std::uint64_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        pwrite(file_, bytes.data() + written, bytes.size() - written,
               static_cast<off_t>(start + written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failData("keep");
    written += static_cast<std::uint64_t>(count);
  }
  size_ = start + bytes.size();
  return {start, bytes.size()};
}

void DataFile::linkInto(const std::string& directory) const {
  const std::string target = "/proc/self/fd/" + std::to_string(file_);
  if (symlink(target.c_str(), (directory + "/" + kName).c_str()) != 0)
    failData("link");
}

void DataFile::copyInto(const std::string& directory) const {
  const std::string path = directory + "/" + kName;
  std::remove(path.c_str());
  std::ofstream stream(path, std::ios::binary);
  std::vector<char> block(1 << 20);
  for (std::uint64_t at = 0; at < size_; at += block.size()) {
    const std::uint64_t count =
        std::min<std::uint64_t>(block.size(), size_ - at);
    read({at, count}, block.data());
    stream.write(block.data(), static_cast<std::streamsize>(count));
  }
  if (!stream.flush()) failData("copy");
}

void DataFile::read(const DataPlace& place, void* buffer) const {
  std::uint64_t done = 0;
  while (done < place.size) {
    const ssize_t count =
        pread(file_, static_cast<std::uint8_t*>(buffer) + done,
              place.size - done, static_cast<off_t>(place.offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) failData("read");
    done += static_cast<std::uint64_t>(count);
  }
}

}  // namespace kiv::ort
