#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "diagnostics/messages.h"
#include "platform/files.h"

namespace kiv::output {

// One open file of the recording, which knows its own end: a write that fails
// is undone by restore().
//
//   const std::uint64_t end = file.end();
//   if (Failed failed = file.flush()) messages.add(file.restore(end));
//
// No other recorder writes to the file meanwhile, since it is locked. One
// thread at a time.
class RecordedFile {
 public:
  RecordedFile() = default;
  ~RecordedFile();
  RecordedFile(const RecordedFile&) = delete;
  RecordedFile& operator=(const RecordedFile&) = delete;

  // Creates the directory if need be (one level) and opens the file in it.
  Failed open(const std::string& directory, const std::string& fileName,
              platform::OpenMode mode);
  bool isOpen() const { return stream_ != nullptr; }
  // Whether the last open() failed since another recorder has the file.
  bool isHeldByAnother() const { return heldByAnother_; }
  // Whether restore() failed, and nothing is written any more.
  bool isDamaged() const { return damaged_; }
  // From the system's root: the client may change its directory.
  const std::string& path() const { return path_; }
  // Bytes in the file, as far as they were written here.
  std::uint64_t end() const { return end_; }

  // Appends `count` elements and stores how many were written; fails only when
  // nothing can be written at all.
  Failed write(const void* elements, std::size_t elementSize, std::size_t count,
               std::size_t& written);
  Failed flush();
  Failed close();

  // Whether the file is still the one that was opened. A client that closes
  // whatever is open has closed this file, too, and another one of its own may
  // have its descriptor by now; then the file is given up.
  bool isStillOurs();

  // Cuts the file back to an earlier end. If that fails nothing is written any
  // more: whatever followed would be read at the wrong place.
  Failed restore(std::uint64_t end);

 private:
  Failed failed(const char* message) const;

  std::FILE* stream_ = nullptr;
  std::string path_;
  std::uint64_t end_ = 0;
  // As it was when it was opened.
  std::optional<platform::FileState> opened_;
  bool heldByAnother_ = false;
  bool damaged_ = false;
};

}  // namespace kiv::output
