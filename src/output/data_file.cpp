#include "output/data_file.h"

#include <utility>

namespace kiv::output {

DataFile::DataFile(std::string directory, std::string fileName)
    : directory_(std::move(directory)), fileName_(std::move(fileName)) {}

void DataFile::setLocation(std::string directory, std::string fileName) {
  directory_ = std::move(directory);
  fileName_ = std::move(fileName);
}

bool DataFile::open() {
  return stream_.open(
      directory_, fileName_,
      append_ ? platform::OpenMode::kAppend : platform::OpenMode::kTruncate);
}

bool DataFile::write(const DataRun& run) {
  const auto written = stream_.write(run.bytes, run.elementSize, run.count);
  if (!written) return false;
  if (*written != run.count) {
    return stream_.failed(
        "Number of elements written(%ld) does not match number of elements "
        "requested(%ld)",
        {static_cast<long>(*written), static_cast<long>(run.count)});
  }
  return stream_.flush();
}

}  // namespace kiv::output
