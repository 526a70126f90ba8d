#pragma once

#include <span>
#include <string>
#include <string_view>

#include "output/output_stream.h"

namespace kiv::output {

// The generated C file: header, one block of statements a recorded call,
// footer. Every write is with the system when it returns. Failures are logged
// and told by the result. Not to be used from two threads at once.
class ModelFile {
 public:
  ModelFile(std::string directory, std::string fileName);
  // Writes the footer, if wanted, and closes.
  ~ModelFile();

  void setLocation(std::string directory, std::string fileName);
  // Without a header the file is opened for appending.
  void setFrame(bool writeHeader, bool writeFooter);

  bool open();
  bool isOpen() const { return stream_.isOpen(); }
  bool writeHeader(std::span<const std::string_view> includes,
                   std::string_view dataFileName, std::string_view timeStamp);
  bool writeString(std::string_view text);
  bool writeFooter();
  bool close() { return stream_.close(); }

  // What undoes a call that could not be written whole.
  OutputStream& stream() { return stream_; }

 private:
  // Part of a frame would spoil what is written behind it.
  bool writeFrame(std::string_view text);

  OutputStream stream_;
  std::string directory_;
  std::string fileName_;
  bool writeHeader_ = true;
  bool writeFooter_ = true;
};

}  // namespace kiv::output
