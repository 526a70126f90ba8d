#include <windows.h>

#include <system_error>
#include <utility>

#include "recording/platform/mapped_file.h"

namespace kiv::recording {
namespace {

std::string lastError() {
  return std::system_category().message(static_cast<int>(GetLastError()));
}

// Null with the system's words for an empty view.
void* mapView(HANDLE file, bool isPrivate, std::string& why) {
  const HANDLE mapping = CreateFileMappingW(
      file, nullptr, isPrivate ? PAGE_WRITECOPY : PAGE_READONLY, 0, 0, nullptr);
  if (mapping == nullptr) {
    why = lastError();
    return nullptr;
  }
  void* const view = MapViewOfFile(
      mapping, isPrivate ? FILE_MAP_COPY : FILE_MAP_READ, 0, 0, 0);
  if (view == nullptr) why = lastError();
  // The view keeps the mapping.
  CloseHandle(mapping);
  return view;
}

}  // namespace

std::optional<MappedFile> MappedFile::open(const std::filesystem::path& path,
                                           Writes writes, std::string& why) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    why = lastError();
    return std::nullopt;
  }
  LARGE_INTEGER size = {};
  if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &size)) {
    why = "It is no regular file";
    CloseHandle(file);
    return std::nullopt;
  }
  const auto count = static_cast<std::size_t>(size.QuadPart);
  void* const view =
      count == 0 ? nullptr : mapView(file, writes == Writes::kPrivate, why);
  CloseHandle(file);
  if (count != 0 && view == nullptr) return std::nullopt;
  return MappedFile({static_cast<std::byte*>(view), count});
}

MappedFile::~MappedFile() {
  if (!bytes_.empty()) UnmapViewOfFile(bytes_.data());
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : bytes_(std::exchange(other.bytes_, {})) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  std::swap(bytes_, other.bytes_);
  return *this;
}

// Takes the pages out of the working set: unlocking what is not locked does
// that.
void MappedFile::release(std::size_t begin, std::size_t end) const {
  if (begin < end && end <= bytes_.size())
    VirtualUnlock(bytes_.data() + begin, end - begin);
}

}  // namespace kiv::recording
