#include "session/session.h"

#include <utility>

#include "output/environment_settings.h"
#include "output/existing_program.h"

namespace kiv::session {

Status Session::ensureStarted() noexcept {
  if (started_) return Status::kOk;
  Messages messages;
  try {
    const std::lock_guard lock(startMutex_);
    return start(messages);
  } catch (...) {
    return Status::kNotStarted;
  }
}

// A program that is continued has names that later calls must leave alone.
Status Session::start(Messages& messages) {
  if (started_) return Status::kOk;
  if (!std::exchange(hasReadEnvironment_, true))
    files_.adopt(output::withEnvironment(files_.settings(), given_, messages));
  if (const Status s = files_.start(messages); !ok(s)) return s;
  if (!files_.settings().writeHeader) reserveNamesOf(files_.settings());
  started_ = true;
  return Status::kOk;
}

void Session::reserveNamesOf(const output::OutputSettings& settings) {
  output::visitIdentifiers(settings.modelPath(), [this](std::string_view name) {
    names_.reserve(name);
  });
}

void Session::note(const output::OutputChanges& changes) {
  if (changes.directory) given_.directory = changes.directory;
  if (changes.backendId) given_.backendId = changes.backendId;
  if (changes.fileNames) given_.fileNames = changes.fileNames;
  given_.saysTimeStamp = given_.saysTimeStamp || changes.saysTimeStamp;
}

std::optional<Status> Session::configure(const output::OutputChanges& changes,
                                         bool expectStarted) {
  Messages messages;
  const std::lock_guard lock(startMutex_);
  if (started_ != expectStarted) return std::nullopt;
  if (!started_) note(changes);
  output::OutputSettings settings = output::changed(files_.settings(), changes);
  if (!started_ || !changes.fileNames) {
    files_.adopt(std::move(settings));
    return Status::kOk;
  }
  // Before the switch: other threads' calls go to the new files at once.
  if (!settings.writeHeader) reserveNamesOf(settings);
  return files_.switchTo(std::move(settings), messages);
}

std::pair<output::OutputSettings, std::uint32_t> Session::program() {
  const std::lock_guard lock(startMutex_);
  return {files_.settings(), files_.programNumber()};
}

void Session::suggestBackendId(std::uint32_t id) {
  const std::lock_guard lock(startMutex_);
  if (started_ || given_.backendId) return;
  output::OutputSettings settings = files_.settings();
  settings.backendId = id;
  files_.adopt(std::move(settings));
}

template <typename Object>
Handle Session::newObject(Registry<Object>& registry, std::string_view prefix,
                          Family family) noexcept {
  try {
    return registry.add(registry.prepare(std::make_shared<Object>(
        names_.unique(prefix, family), programNumber())));
  } catch (...) {
    return 0;
  }
}

Handle Session::newContext() noexcept {
  return newObject(contexts_, "context", Family::kContext);
}

Handle Session::newDevice() noexcept {
  return newObject(devices_, "device", Family::kPlain);
}

Handle Session::newProfile() noexcept {
  return newObject(profiles_, "profile", Family::kPlain);
}

bool Session::eraseContext(Handle handle) noexcept {
  const auto context = contexts_.find(handle);
  if (context == nullptr || !contexts_.erase(handle)) return false;
  context->forgetGraphs(
      [this](const SaverGraph& graph) { graphs_.erase(handleOf(&graph)); });
  return true;
}

}  // namespace kiv::session
