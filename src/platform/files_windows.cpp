#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include <array>
#include <cstdlib>

#include "platform/files.h"

namespace kiv::platform {
namespace {

// The system finds no directory under a name that ends with a slash.
std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == '\\'))
    path.pop_back();
  return path;
}

HANDLE handleOf(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
}

// Where no byte will ever be: others may read and write those that there are.
// The lock goes with the file's handle.
bool lock(std::FILE* stream) {
  constexpr DWORD kFarOff = 0x40000000;
  OVERLAPPED range{};
  range.OffsetHigh = kFarOff;
  return ::LockFileEx(handleOf(stream),
                      LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1,
                      0, &range) != 0 ||
         ::GetLastError() != ERROR_LOCK_VIOLATION;
}

}  // namespace

// The mode "wb" would empty a file that belongs to another process. Child
// processes get no handles ("N").
OpenedFile openForWriting(const std::string& path, OpenMode mode) {
  std::FILE* stream = ::_fsopen(path.c_str(), "abN", _SH_DENYNO);
  if (stream == nullptr) return {};
  const bool isHeldByAnother = !lock(stream);
  if (isHeldByAnother ||
      (mode == OpenMode::kTruncate && ::_filelengthi64(::_fileno(stream)) > 0 &&
       !truncateFile(stream, 0))) {
    std::fclose(stream);
    return {nullptr, isHeldByAnother};
  }
  std::setvbuf(stream, nullptr, _IONBF, 0);
  return {stream, false};
}

bool closeFile(std::FILE* stream) { return std::fclose(stream) == 0; }

std::FILE* openForReading(const std::string& path) {
  std::FILE* stream = ::_fsopen(path.c_str(), "rbN", _SH_DENYNO);
  if (stream == nullptr) return nullptr;
  if (::GetFileType(handleOf(stream)) == FILE_TYPE_DISK) return stream;
  std::fclose(stream);
  return nullptr;
}

// The runtime that the library is linked with has descriptors of its own.
std::optional<FileState> fileState(std::FILE* stream) {
  const __int64 size = ::_filelengthi64(::_fileno(stream));
  if (size < 0) return std::nullopt;
  return FileState{static_cast<std::uint64_t>(size)};
}

bool truncateFile(std::FILE* stream, std::uint64_t size) {
  const auto end = static_cast<__int64>(size);
  return ::_chsize_s(::_fileno(stream), end) == 0 &&
         ::_fseeki64(stream, end, SEEK_SET) == 0;
}

bool createFile(const std::string& path) {
  const HANDLE file = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  return file != INVALID_HANDLE_VALUE && ::CloseHandle(file) != 0;
}

std::string absolutePath(const std::string& path) {
  std::array<char, MAX_PATH> absolute{};
  const DWORD length =
      ::GetFullPathNameA(path.c_str(), static_cast<DWORD>(absolute.size()),
                         absolute.data(), nullptr);
  return length == 0 || length >= absolute.size() ? path : absolute.data();
}

std::string lastFailure() {
  std::array<char, 256> text{};
  DWORD length = ::FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      ::GetLastError(), 0, text.data(), static_cast<DWORD>(text.size()),
      nullptr);
  while (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ')
    --length;
  return {text.data(), length};
}

bool pathExists(const std::string& path) {
  struct _stat64 info {};
  return ::_stat64(withoutTrailingSlashes(path).c_str(), &info) == 0;
}

bool isDirectory(const std::string& path) {
  const DWORD attributes =
      ::GetFileAttributesA(withoutTrailingSlashes(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool createDirectory(const std::string& path) {
  return ::CreateDirectoryA(path.c_str(), nullptr) != 0;
}

}  // namespace kiv::platform
