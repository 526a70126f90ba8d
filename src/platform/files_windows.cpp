#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include "platform/files.h"

namespace kiv::platform {
namespace {

// The system finds no directory under a name that ends with a slash.
std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == '\\'))
    path.pop_back();
  return path;
}

}  // namespace

std::FILE* openForWriting(const std::string& path, OpenMode mode) {
  std::FILE* stream = ::_fsopen(
      path.c_str(), mode == OpenMode::kAppend ? "ab" : "wb", _SH_DENYNO);
  if (stream != nullptr) std::setvbuf(stream, nullptr, _IONBF, 0);
  return stream;
}

std::optional<std::uint64_t> fileSize(std::FILE* stream) {
  const __int64 size = ::_filelengthi64(::_fileno(stream));
  if (size < 0) return std::nullopt;
  return static_cast<std::uint64_t>(size);
}

bool truncateFile(std::FILE* stream, std::uint64_t size) {
  const auto end = static_cast<__int64>(size);
  return ::_chsize_s(::_fileno(stream), end) == 0 &&
         ::_fseeki64(stream, end, SEEK_SET) == 0;
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
