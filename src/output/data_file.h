#pragma once

#include <string>

#include "output/code_stream.h"
#include "output/recorded_file.h"

namespace kiv::output {

// The bulk bytes of a recording:
//
//   file = run*
//   run  = count elements of elementSize bytes, as they lie in memory
//
// without header, padding, lengths or index. The generated program reads it
// once from front to back; its read statements stand in the order of the runs
// and hold their sizes. One thread at a time.
class DataFile {
 public:
  Failed open(const std::string& directory, const std::string& fileName,
              bool append) {
    return file_.open(
        directory, fileName,
        append ? platform::OpenMode::kAppend : platform::OpenMode::kTruncate);
  }
  bool isOpen() const { return file_.isOpen(); }
  bool isHeldByAnother() const { return file_.isHeldByAnother(); }
  Failed write(const DataRun& run);
  Failed close() { return file_.close(); }

  std::uint64_t end() const { return file_.end(); }
  Failed restore(std::uint64_t end) { return file_.restore(end); }

 private:
  RecordedFile file_;
};

}  // namespace kiv::output
