#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "diagnostics/messages.h"
#include "platform/files.h"

namespace kiv::output {

// One open file of the recording, which a call that cannot be written whole
// leaves as it was. Failures are logged and told by the result.
class OutputStream {
 public:
  OutputStream() = default;
  ~OutputStream();
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  // Creates the directory if need be (one level) and opens the file. A "/" is
  // appended to a directory that lacks one; an empty directory stays empty.
  bool open(std::string& directory, const std::string& fileName,
            platform::OpenMode mode);
  bool isOpen() const { return stream_ != nullptr; }
  // Whether restore() failed, and nothing is written any more.
  bool isDamaged() const { return damaged_; }

  // Appends `count` elements; returns how many were written, or nothing when
  // there is no stream to write to. All or nothing is the caller's to make, by
  // mark() and restore().
  std::optional<std::size_t> write(const void* elements,
                                   std::size_t elementSize, std::size_t count);
  bool flush();
  bool close();

  // Messages wait there from now on; with null they are logged at once.
  void reportTo(Messages* messages) { messages_ = messages; }
  // Reports a failure; the result is false.
  bool failed(const char* format, MessageArgument argument = {});

  // Where the file ends, before a call is written. A client that closes
  // whatever is open has closed this file, too, and another one of its own may
  // have its descriptor by now. Then there is no mark, and no stream any more.
  std::optional<std::uint64_t> mark();

  // Cuts the file back to a mark. If that fails nothing is written any more:
  // whatever followed would be read at the wrong place.
  void restore(std::uint64_t mark);

 private:
  bool ensureDirectory(const std::string& path);

  std::FILE* stream_ = nullptr;
  // As it was when it was opened.
  std::optional<platform::FileState> opened_;
  bool damaged_ = false;
  Messages* messages_ = nullptr;
};

}  // namespace kiv::output
