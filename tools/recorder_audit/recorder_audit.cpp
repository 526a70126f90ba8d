// A library for the dynamic loader (LD_AUDIT) that gives an application the
// recorder in place of its backend, whether it is linked with it or opens it by
// dlopen. The application's own code, its search paths and its other libraries
// are as they were.
//
//   KIV_RECORD_LIBRARY   the recorder's path
//   KIV_RELAY_BACKEND    the real backend's path, where the recorder is the
//                        relay; what these two open is left as it is
//   KIV_RECORD_REPLACE   a shell pattern of the backend's file name; without it
//                        every library that exports KivInterface_getProviders
//
// The loader has it in a namespace of its own and calls it under its lock.

#include <elf.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace {

constexpr std::string_view kEntryPoint = "KivInterface_getProviders";

// A file's bytes; empty if it cannot be read.
class MappedLibrary {
 public:
  explicit MappedLibrary(const char* path) {
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    struct stat info {};
    if (::fstat(file, &info) == 0 && S_ISREG(info.st_mode) &&
        info.st_size > 0) {
      size_ = static_cast<std::size_t>(info.st_size);
      memory_ = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
    }
    ::close(file);
  }
  ~MappedLibrary() {
    if (memory_ != MAP_FAILED) ::munmap(memory_, size_);
  }
  MappedLibrary(const MappedLibrary&) = delete;
  MappedLibrary& operator=(const MappedLibrary&) = delete;

  // `count` objects at an offset; none where the file is shorter.
  template <typename Object>
  std::span<const Object> at(std::size_t offset, std::size_t count) const {
    if (memory_ == MAP_FAILED || offset > size_ ||
        count > (size_ - offset) / sizeof(Object))
      return {};
    return {reinterpret_cast<const Object*>(
                static_cast<const std::byte*>(memory_) + offset),
            count};
  }

 private:
  void* memory_ = MAP_FAILED;
  std::size_t size_ = 0;
};

using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);

std::span<const Section> sectionsOf(const MappedLibrary& library) {
  const auto header = library.at<ElfW(Ehdr)>(0, 1);
  if (header.empty() || std::memcmp(header[0].e_ident, ELFMAG, SELFMAG) != 0 ||
      header[0].e_shentsize != sizeof(Section))
    return {};
  return library.at<Section>(header[0].e_shoff, header[0].e_shnum);
}

bool exportsProviders(const char* path) {
  const MappedLibrary library(path);
  const auto sections = sectionsOf(library);
  for (const Section& section : sections) {
    if (section.sh_type != SHT_DYNSYM || section.sh_link >= sections.size())
      continue;
    const Section& names = sections[section.sh_link];
    const auto text = library.at<char>(names.sh_offset, names.sh_size);
    for (const Symbol& symbol : library.at<Symbol>(
             section.sh_offset, section.sh_size / sizeof(Symbol))) {
      if (symbol.st_shndx != SHN_UNDEF &&
          symbol.st_name + kEntryPoint.size() < text.size() &&
          &text[symbol.st_name] == kEntryPoint)
        return true;
    }
  }
  return false;
}

const char* fileName(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

bool isSameFile(const char* first, const char* second) {
  struct stat a {};
  struct stat b {};
  return ::stat(first, &a) == 0 && ::stat(second, &b) == 0 &&
         a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The application's own program is no library that it opens.
bool isBackend(const char* name) {
  if (const char* pattern = std::getenv("KIV_RECORD_REPLACE"))
    return ::fnmatch(pattern, fileName(name), 0) == 0;
  return exportsProviders(name);
}

// Whether a library asks that must get what it asks for: the relay and, below
// it, the real backend.
bool isBehindRelay(const char* requester) {
  const char* real = std::getenv("KIV_RELAY_BACKEND");
  const char* recorder = std::getenv("KIV_RECORD_LIBRARY");
  if (real == nullptr || recorder == nullptr) return false;
  return isSameFile(requester, recorder) || isSameFile(requester, real);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) unsigned la_version(
    unsigned version) {
  return version;
}

// Has the loader name each library that asks for another one by its own record.
extern "C" __attribute__((visibility("default"))) unsigned la_objopen(
    link_map* /*map*/, Lmid_t /*space*/, uintptr_t* /*cookie*/) {
  return 0;
}

// Called with a library's name as it is given and then with each path that it
// may have; the result is loaded in its place.
extern "C" __attribute__((visibility("default"))) char* la_objsearch(
    const char* name, uintptr_t* cookie, unsigned /*flag*/) {
  const char* recorder = std::getenv("KIV_RECORD_LIBRARY");
  const auto* requester = reinterpret_cast<const link_map*>(*cookie);
  if (requester != nullptr && isBehindRelay(requester->l_name))
    return const_cast<char*>(name);
  if (recorder != nullptr && isBackend(name) && !isSameFile(name, recorder))
    name = recorder;
  return const_cast<char*>(name);
}
