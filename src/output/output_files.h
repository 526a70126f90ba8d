#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/messages.h"
#include "output/code_stream.h"
#include "output/data_file.h"
#include "output/existing_program.h"
#include "output/model_file.h"

namespace kiv::output {

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
};

// The codes of a call that could not be written, for either file.
struct WriteFailures {
  Status text;
  Status data;
};

// Settings to be changed; what is not given stays.
struct OutputChanges {
  struct FileNames {
    std::string model;
    std::string data;
  };

  std::optional<std::string> directory;
  std::optional<std::uint32_t> backendId;
  // Given by the client; while files are open it switches to new ones.
  std::optional<FileNames> fileNames;
  std::optional<bool> writeHeader;
  std::optional<bool> writeFooter;
  // Names made from the time, which win over fileNames, and the time itself.
  std::optional<FileNames> stampedNames;
  std::string timeStamp;
};

// Both files of the recording behind one lock. From any thread; messages of
// the files are logged when the files are whole and the lock is released.
class OutputFiles {
 public:
  // `onExisting` gets the identifiers of a model file that is to be continued,
  // before it is; it may be called with the files locked.
  explicit OutputFiles(IdentifierVisitor onExisting);

  // Opens both files and writes the header, unless that has been done. What
  // was opened is closed again when a later step fails.
  Status start();
  bool started() const { return started_; }

  // Changes settings, and switches to new files if file names are given while
  // files are open. Nothing happens, and the result is empty, unless started()
  // is still `expectStarted`: what may be changed depends on it.
  std::optional<Status> configure(const OutputChanges& changes,
                                  bool expectStarted);

  // Appends a call: its runs to the data file, then its text to the model
  // file. Unless all of it could be written both files are as before.
  Status append(const std::vector<DataRun>& runs, std::string_view text,
                const WriteFailures& failures);

  // Ends the recording for good while calls are under way that may never come
  // to their end. Without a footer if one of them is writing.
  void endBesideCalls();

  std::uint32_t backendId() const { return backendId_; }

  // Counts the programs written: 0 until the first switch of files.
  std::uint32_t program() const { return program_; }

 private:
  class Access;

  bool openBoth();
  void closeBoth();
  bool openModel();
  bool writeHeader();
  void adopt(OutputSettings settings);
  Status switchFiles(const OutputChanges& changes, Messages& messages);
  const char* endProgram();
  const char* beginProgram();
  bool hasWritten(const OutputSettings& settings) const;
  Status writeCall(const std::vector<DataRun>& runs, std::string_view text,
                   const WriteFailures& failures);

  const IdentifierVisitor onExisting_;
  std::mutex mutex_;
  std::atomic<bool> started_ = false;
  // settings_.backendId, to be read without the lock.
  std::atomic<std::uint32_t> backendId_ = 0;
  std::atomic<std::uint32_t> program_ = 0;
  OutputSettings settings_;
  // Paths of the files that this session has switched away from.
  std::set<std::string> written_;
  // The model file is the last member and so the first to end: its footer
  // closes the recording.
  DataFile data_;
  ModelFile model_;
};

}  // namespace kiv::output
