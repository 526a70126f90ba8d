#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "recording/platform/mapped_file.h"

namespace kiv::recording {

std::optional<MappedFile> MappedFile::open(const std::filesystem::path& path,
                                           Writes writes, std::string& why) {
  // A pipe in the file's place does not hold the reader up.
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status = {};
  if (file < 0 || fstat(file, &status) != 0) {
    why = std::strerror(errno);
    if (file >= 0) close(file);
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    why = "It is no regular file";
    close(file);
    return std::nullopt;
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  void* memory = nullptr;
  if (size != 0) {
    const int access =
        writes == Writes::kPrivate ? PROT_READ | PROT_WRITE : PROT_READ;
    memory = mmap(nullptr, size, access, MAP_PRIVATE | MAP_NORESERVE, file, 0);
    if (memory == MAP_FAILED) {
      why = std::strerror(errno);
      close(file);
      return std::nullopt;
    }
  }
  close(file);
  return MappedFile({static_cast<std::byte*>(memory), size});
}

MappedFile::~MappedFile() {
  if (!bytes_.empty()) munmap(bytes_.data(), bytes_.size());
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : bytes_(std::exchange(other.bytes_, {})) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  std::swap(bytes_, other.bytes_);
  return *this;
}

void MappedFile::release(std::size_t begin, std::size_t end) const {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  begin = (begin + page - 1) / page * page;
  end = end / page * page;
  if (begin < end && end <= bytes_.size())
    madvise(bytes_.data() + begin, end - begin, MADV_DONTNEED);
}

}  // namespace kiv::recording
