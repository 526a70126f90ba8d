#include "output/output_files.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "diagnostics/standard_error.h"
#include "format/frame.h"
#include "output/call_watch.h"

namespace kiv::output {
namespace {

constexpr const char* kOverwriting =
    "The output files are switched to files that this session has written, "
    "what they hold is thrown away";
constexpr const char* kForeignData =
    "The header is switched off and the model file is new, but the data file "
    "%s has bytes, which the program will read in place of its own";
constexpr const char* kStillRefused =
    "Another recorder had the output files when the recording began, so it "
    "stays off; KivSaver_initialize with other names or another directory "
    "turns it on";

// Cuts a file back to where it ended before a call, unless the call is kept.
template <typename File>
class Undo {
 public:
  Undo(File& file, Messages& messages)
      : file_(file), messages_(messages), end_(file.end()) {}
  ~Undo() {
    if (!kept_) messages_.add(file_.restore(end_));
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  void keep() { kept_ = true; }

 private:
  File& file_;
  Messages& messages_;
  const std::uint64_t end_;
  bool kept_ = false;
};

std::set<std::string> filesOf(const OutputSettings& settings) {
  return {settings.modelPath(), settings.dataPath()};
}

}  // namespace

// A write lasts some microseconds, less than going to sleep and being woken
// does, so a thread looks for the lock to become free before it sleeps.
std::unique_lock<std::mutex> OutputFiles::lock() {
  constexpr int kMostTries = 100;
  std::unique_lock lock(mutex_, std::defer_lock);
  for (int i = 0; i < kMostTries; ++i) {
    if (lock.try_lock()) return lock;
    std::this_thread::yield();
  }
  lock.lock();
  return lock;
}

OutputFiles::~OutputFiles() {
  Messages messages;
  if (!model_.isOpen()) return;
  writeFooter(messages);
  reportEnd();
  if (model_.isOpen()) messages.add(model_.close());
}

Status OutputFiles::start(Messages& messages) {
  const auto held = lock();
  if (refused_) return messages.fail({Status::kNotStarted, kStillRefused});
  return openBoth(messages) ? Status::kOk : Status::kNotStarted;
}

// Files are open already when there was no memory for a step behind this one.
bool OutputFiles::openBoth(Messages& messages) {
  closeBoth(messages);
  if (openModel(messages) && writeHeader(messages) && openData(messages))
    return true;
  refused_ = model_.isHeldByAnother() || data_.isHeldByAnother();
  closeBoth(messages);
  return false;
}

void OutputFiles::closeBoth(Messages& messages) {
  if (model_.isOpen()) messages.add(model_.close());
  if (data_.isOpen()) messages.add(data_.close());
}

// Without a header both files are continued: several sessions can write one
// program together.
bool OutputFiles::openModel(Messages& messages) {
  return !messages.add(model_.open(settings_.directory, settings_.modelFileName,
                                   !settings_.writeHeader));
}

bool OutputFiles::openData(Messages& messages) {
  if (messages.add(data_.open(settings_.directory, settings_.dataFileName,
                              !settings_.writeHeader)))
    return false;
  if (!settings_.writeHeader && model_.end() == 0 && data_.end() != 0)
    messages.warn(kForeignData, settings_.dataFileName);
  return true;
}

bool OutputFiles::writeHeader(Messages& messages) {
  return !settings_.writeHeader ||
         model_.writeHeader(format::headersOfBackend(settings_.backendId),
                            settings_.dataFileName, settings_.timeStamp,
                            messages);
}

bool OutputFiles::writeFooter(Messages& messages) {
  return !settings_.writeFooter || model_.writeFooter(messages);
}

void OutputFiles::adopt(OutputSettings settings) {
  if (filesOf(settings) != filesOf(settings_)) refused_ = false;
  settings_ = std::move(settings);
  backendId_ = settings_.backendId;
}

Status OutputFiles::switchTo(OutputSettings settings, Messages& messages) {
  const auto held = lock();
  if (const char* failure = endProgram(messages))
    return messages.fail({Status::kBackendError, failure});
  if (settings.writeHeader && hasWritten(settings)) messages.warn(kOverwriting);
  ++programNumber_;
  adopt(std::move(settings));
  if (const char* failure = beginProgram(messages))
    return messages.fail({Status::kBackendError, failure});
  return Status::kOk;
}

// Returns what failed, or null. Files that the client has closed behind our
// back would stand in the way of every further switch, and are given up.
const char* OutputFiles::endProgram(Messages& messages) {
  if (model_.isOpen()) {
    written_.merge(filesOf(settings_));
    if (!writeFooter(messages)) {
      if (!model_.isOpen()) closeBoth(messages);
      return "Failure when writing model footer";
    }
    reportEnd();
    if (messages.add(model_.close())) {
      closeBoth(messages);
      return "Failure when closing model file";
    }
  }
  if (data_.isOpen() && messages.add(data_.close()))
    return "Failure when closing data file";
  return nullptr;
}

// Returns what failed, or null. A model file without a whole header takes no
// calls.
const char* OutputFiles::beginProgram(Messages& messages) {
  if (!openModel(messages)) return "Failure when opening model file";
  if (!writeHeader(messages)) {
    closeBoth(messages);
    return "Failure when writing model header";
  }
  if (!openData(messages)) return "Failure when opening data file";
  calls_ = 0;
  return nullptr;
}

bool OutputFiles::hasWritten(const OutputSettings& settings) const {
  return std::ranges::any_of(filesOf(settings), [this](const auto& path) {
    return written_.contains(path);
  });
}

// The lock is never released: nothing may follow the footer.
void OutputFiles::finishDespiteCalls() {
  Messages messages;
  if (!mutex_.try_lock() || !model_.isOpen()) return;
  writeFooter(messages);
  reportEnd();
}

void OutputFiles::reportEnd() const {
  log::report("%llu calls recorded, %llu bytes of text, %llu bytes of data: %s",
              static_cast<unsigned long long>(calls_),
              static_cast<unsigned long long>(model_.end()),
              static_cast<unsigned long long>(data_.end()),
              model_.path().c_str());
}

Status OutputFiles::append(std::span<const DataRun> runs, std::string_view text,
                           const WriteFailures& failures, Messages& messages) {
  const auto held = lock();
  Undo undoData(data_, messages);
  Undo undoModel(model_, messages);
  for (const DataRun& run : runs)
    if (messages.add(data_.write(run))) return failures.data;
  if (messages.add(model_.writeString(text))) return failures.text;
  undoData.keep();
  undoModel.keep();
  noteRecordedCall(programNumber_, ++calls_);
  return Status::kOk;
}

}  // namespace kiv::output
