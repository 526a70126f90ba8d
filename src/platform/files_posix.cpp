#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <system_error>

#include "platform/files.h"

namespace kiv::platform {
namespace {

constexpr mode_t kFileAccess = 0666;
constexpr mode_t kDirectoryAccess = 0777;

// A name with a trailing slash can only be that of a directory, so a file in
// its place is found without the slash.
std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// Takes or gives back the whole file. The lock is that of the open file,
// whatever its descriptor: unlike one of the process it is not lost when the
// client opens and closes its own recording, and it holds between two libraries
// of one process.
bool setLock(int descriptor, short type) {
  struct flock lock {};
  lock.l_type = type;
  return ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

bool isRegularFile(int descriptor) {
  struct stat info {};
  return ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

// A device is for all, and a file system without locks has none to hold.
bool isHeldByAnother(int descriptor) {
  return isRegularFile(descriptor) && !setLock(descriptor, F_WRLCK) &&
         (errno == EACCES || errno == EAGAIN);
}

// Devices and pipes have nothing to be cut.
bool makeEmpty(int descriptor) {
  return !isRegularFile(descriptor) || ::ftruncate(descriptor, 0) == 0;
}

// The first of the high descriptors: the last sixteenth below the process's
// limit, or below 4096 where the limit is higher, since the system's table of
// descriptors reaches up to the highest one.
int firstHighDescriptor() {
  constexpr rlim_t kMost = 4096;
  constexpr rlim_t kSixteenth = 16;
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t end = std::min(limit.rlim_cur, kMost);
  return static_cast<int>(end - end / kSixteenth);
}

// Gives the open file a high descriptor in place of the low one, which stays
// where that fails. A client that closes whatever is open closes this file,
// too; its next own files get the lowest free descriptors, so that none of them
// lands under this one and gets what is written here.
int moveHigh(int descriptor) {
  const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, firstHighDescriptor());
  if (moved < 0) return descriptor;
  ::close(descriptor);
  return moved;
}

int openHigh(const char* path, int flags) {
  const int descriptor = ::open(path, flags | O_CLOEXEC, kFileAccess);
  return descriptor < 0 ? descriptor : moveHigh(descriptor);
}

}  // namespace

OpenedFile openForWriting(const std::string& path, OpenMode mode) {
  const bool append = mode == OpenMode::kAppend;
  // A pipe that nobody reads must not keep the client waiting.
  const int flags = O_WRONLY | O_CREAT | O_NONBLOCK | (append ? O_APPEND : 0);
  const int descriptor = openHigh(path.c_str(), flags);
  if (descriptor < 0) return {};
  ::fcntl(descriptor, F_SETFL, append ? O_APPEND : 0);
  OpenedFile opened;
  opened.isHeldByAnother = isHeldByAnother(descriptor);
  if (!opened.isHeldByAnother && (append || makeEmpty(descriptor)))
    opened.stream = ::fdopen(descriptor, append ? "ab" : "wb");
  if (opened.stream == nullptr) {
    ::close(descriptor);
  } else {
    std::setvbuf(opened.stream, nullptr, _IONBF, 0);
    // One thread at a time uses the stream, so it needs no lock of its own.
    ::__fsetlocking(opened.stream, FSETLOCKING_BYCALLER);
  }
  return opened;
}

// A forked child shares the lock, and would keep it.
bool closeFile(std::FILE* stream) {
  setLock(::fileno(stream), F_UNLCK);
  return std::fclose(stream) == 0;
}

std::FILE* openForReading(const std::string& path) {
  const int descriptor =
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  std::FILE* stream =
      isRegularFile(descriptor) ? ::fdopen(descriptor, "rb") : nullptr;
  if (stream == nullptr) ::close(descriptor);
  return stream;
}

std::optional<FileState> fileState(std::FILE* stream) {
  struct stat info {};
  if (::fstat(::fileno(stream), &info) != 0) return std::nullopt;
  return FileState{static_cast<std::uint64_t>(info.st_size), info.st_dev,
                   info.st_ino};
}

bool truncateFile(std::FILE* stream, std::uint64_t size) {
  const auto end = static_cast<off_t>(size);
  return ::ftruncate(::fileno(stream), end) == 0 &&
         ::fseeko(stream, end, SEEK_SET) == 0;
}

bool createFile(const std::string& path) {
  const int descriptor = ::open(
      path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileAccess);
  return descriptor >= 0 && ::close(descriptor) == 0;
}

std::string absolutePath(const std::string& path) {
  if (path.starts_with('/')) return path;
  char directory[PATH_MAX];
  if (::getcwd(directory, sizeof directory) == nullptr) return path;
  const bool isHere = path.starts_with("./");
  return std::string(directory) + "/" + (isHere ? path.substr(2) : path);
}

std::string lastFailure() { return std::generic_category().message(errno); }

bool pathExists(const std::string& path) {
  struct stat info {};
  return ::stat(withoutTrailingSlashes(path).c_str(), &info) == 0;
}

bool isDirectory(const std::string& path) {
  struct stat info {};
  return ::stat(withoutTrailingSlashes(path).c_str(), &info) == 0 &&
         S_ISDIR(info.st_mode);
}

bool createDirectory(const std::string& path) {
  return ::mkdir(path.c_str(), kDirectoryAccess) == 0;
}

}  // namespace kiv::platform
