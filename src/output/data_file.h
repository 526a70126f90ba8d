#pragma once

#include <string>

#include "output/code_stream.h"
#include "output/output_stream.h"

namespace kiv::output {

// The bulk bytes of a recording:
//
//   file = run*
//   run  = count elements of elementSize bytes, as they lie in memory
//
// without header, padding, lengths or index. The generated program reads it
// once from front to back; its read statements stand in the order of the runs
// and hold their sizes. Failures are logged and told by the result. Not to be
// used from two threads at once.
class DataFile {
 public:
  DataFile(std::string directory, std::string fileName);

  void setLocation(std::string directory, std::string fileName);
  void setAppend(bool append) { append_ = append; }

  bool open();
  bool isOpen() const { return stream_.isOpen(); }
  bool write(const DataRun& run);
  bool close() { return stream_.close(); }

  // What undoes a call that could not be written whole.
  OutputStream& stream() { return stream_; }

 private:
  OutputStream stream_;
  std::string directory_;
  std::string fileName_;
  bool append_ = false;
};

}  // namespace kiv::output
