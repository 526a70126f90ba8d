#pragma once

#include <span>
#include <string>
#include <string_view>

#include "output/recorded_file.h"

namespace kiv::output {

// The generated C file:
//
//   file = header block* footer
//
// a block being the statements of one recorded call. Every write is with the
// system when it returns. One thread at a time.
class ModelFile {
 public:
  Failed open(const std::string& directory, const std::string& fileName,
              bool append) {
    return file_.open(
        directory, fileName,
        append ? platform::OpenMode::kAppend : platform::OpenMode::kTruncate);
  }
  bool isOpen() const { return file_.isOpen(); }
  bool isHeldByAnother() const { return file_.isHeldByAnother(); }
  // Written whole, or not at all; false with messages on failure.
  bool writeHeader(std::span<const std::string_view> includes,
                   std::string_view dataFileName, std::string_view timeStamp,
                   Messages& messages);
  bool writeFooter(Messages& messages);
  Failed writeString(std::string_view text);
  Failed close() { return file_.close(); }

  const std::string& path() const { return file_.path(); }
  std::uint64_t end() const { return file_.end(); }
  Failed restore(std::uint64_t end) { return file_.restore(end); }

 private:
  bool writeFrame(std::string_view text, Messages& messages);

  RecordedFile file_;
};

}  // namespace kiv::output
