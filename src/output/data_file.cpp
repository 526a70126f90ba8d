#include "output/data_file.h"

namespace kiv::output {

Failed DataFile::write(const DataRun& run) {
  std::size_t written = 0;
  if (Failed failed =
          file_.write(run.bytes, run.elementSize, run.count, written))
    return failed;
  if (written != run.count) {
    return Message{
        "Number of elements written(%ld) does not match number of elements "
        "requested(%ld)",
        {static_cast<long>(written), static_cast<long>(run.count)}};
  }
  return file_.flush();
}

}  // namespace kiv::output
