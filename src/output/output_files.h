#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "diagnostics/messages.h"
#include "output/code_stream.h"
#include "output/data_file.h"
#include "output/model_file.h"
#include "output/output_settings.h"

namespace kiv::output {

// The codes of a call that could not be written, for either file.
struct WriteFailures {
  Status text;
  Status data;
};

// Both files of the recording behind one lock.
//
//   Messages messages;
//   OutputFiles files;
//   if (!ok(files.start(messages))) return;
//   files.append(code.runs(), code.takeText(true), failures, messages);
//
// Functions put their messages into `messages`, for the caller to send once its
// own locks are released. From any thread; start(), changed(), adopt() and
// switchTo() from one at a time.
class OutputFiles {
 public:
  OutputFiles() = default;
  // Writes the footer, if wanted, and closes the files.
  ~OutputFiles();
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;

  // Opens both files and writes the header; what was opened is closed again
  // when a later step fails. Files that another recorder had at the time are
  // not tried again.
  Status start(Messages& messages);

  const OutputSettings& settings() const { return settings_; }

  // Takes settings for the next start.
  void adopt(OutputSettings settings);

  // Ends the program and begins another one with new settings. A failure leaves
  // the files in the state reached.
  Status switchTo(OutputSettings settings, Messages& messages);

  // Appends a call: its runs to the data file, then its text to the model
  // file. Unless all of it could be written both files are as before.
  Status append(std::span<const DataRun> runs, std::string_view text,
                const WriteFailures& failures, Messages& messages);

  // Ends the recording for good although calls are under way that may never
  // come to their end. Without a footer if one of them is writing.
  void finishDespiteCalls();

  std::uint32_t backendId() const { return backendId_; }

  // Counts the programs begun before this one: 0 until the first switch.
  std::uint32_t programNumber() const { return programNumber_; }

 private:
  bool openBoth(Messages& messages);
  void closeBoth(Messages& messages);
  bool openModel(Messages& messages);
  bool openData(Messages& messages);
  bool writeHeader(Messages& messages);
  bool writeFooter(Messages& messages);
  const char* endProgram(Messages& messages);
  const char* beginProgram(Messages& messages);
  bool hasWritten(const OutputSettings& settings) const;
  void reportEnd() const;
  std::unique_lock<std::mutex> lock();

  std::mutex mutex_;
  // settings_.backendId, to be read without the lock.
  std::atomic<std::uint32_t> backendId_ = 0;
  std::atomic<std::uint32_t> programNumber_ = 0;
  OutputSettings settings_;
  // Whether a start was refused since another recorder has the files.
  bool refused_ = false;
  // Paths of the files that this session has switched away from.
  std::set<std::string> written_;
  // Of this program, by this session.
  std::uint64_t calls_ = 0;
  DataFile data_;
  ModelFile model_;
};

}  // namespace kiv::output
