#include "output/model_file.h"

#include <utility>

#include "output/program_frame.h"

namespace kiv::output {

ModelFile::ModelFile(std::string directory, std::string fileName)
    : directory_(std::move(directory)), fileName_(std::move(fileName)) {}

ModelFile::~ModelFile() {
  if (!stream_.isOpen()) return;
  writeFooter();
  stream_.close();
}

void ModelFile::setLocation(std::string directory, std::string fileName) {
  directory_ = std::move(directory);
  fileName_ = std::move(fileName);
}

void ModelFile::setFrame(bool writeHeader, bool writeFooter) {
  writeHeader_ = writeHeader;
  writeFooter_ = writeFooter;
}

bool ModelFile::open() {
  return stream_.open(directory_, fileName_,
                      writeHeader_ ? platform::OpenMode::kTruncate
                                   : platform::OpenMode::kAppend);
}

bool ModelFile::writeHeader(std::span<const std::string_view> includes,
                            std::string_view dataFileName,
                            std::string_view timeStamp) {
  return !writeHeader_ ||
         writeFrame(programHeader(includes, dataFileName, timeStamp));
}

bool ModelFile::writeString(std::string_view text) {
  const auto written = stream_.write(text.data(), 1, text.size());
  if (!written) return false;
  if (*written != text.size()) {
    return stream_.failed(
        "Size of string written(%ld) does not match size of original "
        "string(%ld)",
        {static_cast<long>(*written), static_cast<long>(text.size())});
  }
  return stream_.flush();
}

// A file that holds part of a call gets none: it can be ended, but is no
// program.
bool ModelFile::writeFooter() {
  return !writeFooter_ || stream_.isDamaged() || writeFrame(programFooter());
}

bool ModelFile::writeFrame(std::string_view text) {
  const auto mark = stream_.mark();
  if (writeString(text)) return true;
  if (mark) stream_.restore(*mark);
  return false;
}

}  // namespace kiv::output
