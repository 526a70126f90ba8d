#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The settings of a recording, and changes of them, as plain values.
namespace kiv::output {

// The path of a file in a directory, which is empty or a path with or without
// a slash at its end.
std::string pathOf(const std::string& directory, const std::string& fileName);

// Where a recording goes and what surrounds its calls.
struct OutputSettings {
  std::string directory = "./saver_output/";
  std::string modelFileName = "saver_output.c";
  std::string dataFileName = "params.bin";
  std::uint32_t backendId = 0;
  bool writeHeader = true;
  bool writeFooter = true;
  // Shown in the header when the file names carry a time stamp.
  std::string timeStamp;

  std::string modelPath() const { return pathOf(directory, modelFileName); }
  std::string dataPath() const { return pathOf(directory, dataFileName); }
};

struct FileNames {
  std::string model;
  std::string data;
};

// Settings to be changed; what is not given stays.
struct OutputChanges {
  std::optional<std::string> directory;
  std::optional<std::uint32_t> backendId;
  // Given by the client; while files are open it switches to new ones.
  std::optional<FileNames> fileNames;
  std::optional<bool> writeHeader;
  std::optional<bool> writeFooter;
  // Names made from the time, which win over fileNames, and the time itself.
  std::optional<FileNames> stampedNames;
  std::string timeStamp;
  // Whether the client said if it wants them, and be it that it does not.
  bool saysTimeStamp = false;
};

// The settings as changes make them.
OutputSettings changed(OutputSettings settings, const OutputChanges& changes);

// Names of both files with the present time in them, and the time as people
// write it.
void stampFileNames(OutputChanges& changes);

}  // namespace kiv::output
