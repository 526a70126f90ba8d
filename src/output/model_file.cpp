#include "output/model_file.h"

#include "format/frame.h"

namespace kiv::output {

bool ModelFile::writeHeader(std::span<const std::string_view> includes,
                            std::string_view dataFileName,
                            std::string_view timeStamp, Messages& messages) {
  return writeFrame(format::programHeader(includes, dataFileName, timeStamp),
                    messages);
}

Failed ModelFile::writeString(std::string_view text) {
  std::size_t written = 0;
  if (Failed failed = file_.write(text.data(), 1, text.size(), written))
    return failed;
  if (written != text.size()) {
    return Message{
        "Size of string written(%ld) does not match size of original "
        "string(%ld)",
        {static_cast<long>(written), static_cast<long>(text.size())}};
  }
  return file_.flush();
}

// A file that holds part of a call gets none: it can be ended, but is no
// program.
bool ModelFile::writeFooter(Messages& messages) {
  return file_.isDamaged() || writeFrame(format::programFooter(), messages);
}

// Part of a frame would spoil what is written behind it.
bool ModelFile::writeFrame(std::string_view text, Messages& messages) {
  (void)file_.isStillOurs();
  const std::uint64_t before = file_.end();
  if (!messages.add(writeString(text))) return true;
  messages.add(file_.restore(before));
  return false;
}

}  // namespace kiv::output
