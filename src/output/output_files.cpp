#include "output/output_files.h"

#include <algorithm>
#include <utility>

#include "output/program_frame.h"

namespace kiv::output {
namespace {

// Cuts a file back to where it ended before a call, unless the call is kept.
class Undo {
 public:
  explicit Undo(OutputStream& stream) : stream_(stream), mark_(stream.mark()) {}
  ~Undo() {
    if (!kept_ && mark_) stream_.restore(*mark_);
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  void keep() { kept_ = true; }

 private:
  OutputStream& stream_;
  std::optional<std::uint64_t> mark_;
  bool kept_ = false;
};

constexpr const char* kOverwriting =
    "The output files are switched to files that this session has written, "
    "what they hold is thrown away";

std::string pathOf(const OutputSettings& settings, const std::string& file) {
  const bool slash =
      !settings.directory.empty() && settings.directory.back() != '/';
  return settings.directory + (slash ? "/" : "") + file;
}

std::set<std::string> filesOf(const OutputSettings& settings) {
  return {pathOf(settings, settings.modelFileName),
          pathOf(settings, settings.dataFileName)};
}

OutputSettings changed(OutputSettings settings, const OutputChanges& changes) {
  if (changes.directory) settings.directory = *changes.directory;
  if (changes.backendId) settings.backendId = *changes.backendId;
  if (changes.writeHeader) settings.writeHeader = *changes.writeHeader;
  if (changes.writeFooter) settings.writeFooter = *changes.writeFooter;
  const auto& names =
      changes.stampedNames ? changes.stampedNames : changes.fileNames;
  if (names) {
    settings.modelFileName = names->model;
    settings.dataFileName = names->data;
    settings.timeStamp = changes.timeStamp;
  }
  return settings;
}

}  // namespace

// The lock. Messages of the files wait until it is released, since the client's
// log callback may call the library, or exit.
class OutputFiles::Access {
 public:
  explicit Access(OutputFiles& files) : files_(files), lock_(files.mutex_) {
    reportTo(&messages_);
  }
  ~Access() { reportTo(nullptr); }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;

  Messages& messages() { return messages_; }

 private:
  void reportTo(Messages* messages) {
    files_.data_.stream().reportTo(messages);
    files_.model_.stream().reportTo(messages);
  }

  // Sent at its end, which is after the lock's.
  Messages messages_;
  OutputFiles& files_;
  const std::lock_guard<std::mutex> lock_;
};

OutputFiles::OutputFiles(IdentifierVisitor onExisting)
    : onExisting_(std::move(onExisting)),
      data_(settings_.directory, settings_.dataFileName),
      model_(settings_.directory, settings_.modelFileName) {}

Status OutputFiles::start() {
  if (started_) return Status::kOk;
  const Access access(*this);
  if (started_) return Status::kOk;
  if (!openBoth()) return Status::kNotStarted;
  started_ = true;
  return Status::kOk;
}

bool OutputFiles::openBoth() {
  // Of an attempt for which there was no memory.
  closeBoth();
  if (openModel() && writeHeader() && data_.open()) return true;
  closeBoth();
  return false;
}

void OutputFiles::closeBoth() {
  if (model_.isOpen()) model_.close();
  if (data_.isOpen()) data_.close();
}

// Opens the model file as the settings say, and makes the data file ready to be
// opened. Without a header both are continued: several sessions can write one
// program together, each with names that the others have not used.
bool OutputFiles::openModel() {
  model_.setLocation(settings_.directory, settings_.modelFileName);
  model_.setFrame(settings_.writeHeader, settings_.writeFooter);
  data_.setLocation(settings_.directory, settings_.dataFileName);
  data_.setAppend(!settings_.writeHeader);
  if (!model_.open()) return false;
  if (!settings_.writeHeader)
    visitIdentifiers(pathOf(settings_, settings_.modelFileName), onExisting_);
  return true;
}

bool OutputFiles::writeHeader() {
  return model_.writeHeader(headersOfBackend(settings_.backendId),
                            settings_.dataFileName, settings_.timeStamp);
}

std::optional<Status> OutputFiles::configure(const OutputChanges& changes,
                                             bool expectStarted) {
  Access access(*this);
  if (started_ != expectStarted) return std::nullopt;
  if (started_ && changes.fileNames)
    return switchFiles(changes, access.messages());
  adopt(changed(settings_, changes));
  return Status::kOk;
}

void OutputFiles::adopt(OutputSettings settings) {
  settings_ = std::move(settings);
  backendId_ = settings_.backendId;
}

// A failure leaves the files in the state reached; what is not open then needs
// no ending next time.
Status OutputFiles::switchFiles(const OutputChanges& changes,
                                Messages& messages) {
  if (const char* failure = endProgram())
    return messages.fail({Status::kBackendError, failure});
  OutputSettings next = changed(settings_, changes);
  if (next.writeHeader && hasWritten(next)) messages.warn(kOverwriting);
  ++program_;
  adopt(std::move(next));
  if (const char* failure = beginProgram())
    return messages.fail({Status::kBackendError, failure});
  return Status::kOk;
}

// Returns what failed, or null. Files that the client has closed behind our
// back would stand in the way of every further switch, and are given up.
const char* OutputFiles::endProgram() {
  if (model_.isOpen()) {
    written_.merge(filesOf(settings_));
    if (!model_.writeFooter()) {
      if (!model_.isOpen()) closeBoth();
      return "Failure when writing model footer";
    }
    if (!model_.close()) {
      closeBoth();
      return "Failure when closing model file";
    }
  }
  if (data_.isOpen() && !data_.close()) return "Failure when closing data file";
  return nullptr;
}

// Returns what failed, or null. A model file without a whole header takes no
// calls.
const char* OutputFiles::beginProgram() {
  if (!openModel()) return "Failure when opening model file";
  if (!writeHeader()) {
    closeBoth();
    return "Failure when writing model header";
  }
  if (!data_.open()) return "Failure when opening data file";
  return nullptr;
}

bool OutputFiles::hasWritten(const OutputSettings& settings) const {
  return std::ranges::any_of(filesOf(settings), [this](const auto& path) {
    return written_.contains(path);
  });
}

// The lock is never released: nothing may follow the footer.
void OutputFiles::endBesideCalls() {
  if (mutex_.try_lock() && model_.isOpen()) model_.writeFooter();
}

Status OutputFiles::append(const std::vector<DataRun>& runs,
                           std::string_view text,
                           const WriteFailures& failures) {
  const Access access(*this);
  return writeCall(runs, text, failures);
}

Status OutputFiles::writeCall(const std::vector<DataRun>& runs,
                              std::string_view text,
                              const WriteFailures& failures) {
  Undo undoData(data_.stream());
  Undo undoModel(model_.stream());
  for (const DataRun& run : runs) {
    if (!data_.write(run)) return failures.data;
  }
  if (!model_.writeString(text)) return failures.text;
  undoData.keep();
  undoModel.keep();
  return Status::kOk;
}

}  // namespace kiv::output
