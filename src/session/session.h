#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "output/output_files.h"
#include "session/code_streams.h"
#include "session/names.h"
#include "session/objects.h"
#include "session/registry.h"

namespace kiv::session {

// All state of the library: the output files, the recorded objects and the
// names of the generated program. Made on first use; its end, when the library
// is unloaded or the process exits, finishes the files. From any thread.
//
//   const SessionUse use;
//   if (use.get() == nullptr || !ok(use.get()->ensureStarted())) return 4000;
class Session {
 public:
  // Opens the output files unless they are open. A failure, of memory too, is
  // kNotStarted, and the next call tries again.
  Status ensureStarted() noexcept;
  bool started() const { return started_; }

  // Changes settings, and switches to new files if file names are given while
  // files are open. Nothing happens, and the result is empty, unless started()
  // is still `expectStarted`: what may be changed depends on it.
  std::optional<Status> configure(const output::OutputChanges& changes,
                                  bool expectStarted);

  // Where the program that is written now goes, and its number.
  std::pair<output::OutputSettings, std::uint32_t> program();

  // Takes the id for that of the backend that the recording is for, unless the
  // client or the environment names one or the session has started.
  void suggestBackendId(std::uint32_t id);

  // New objects under the next variable of their kind ("context_0",
  // "context_1", ...); 0 when there is no memory for one.
  Handle newContext() noexcept;
  Handle newDevice() noexcept;
  Handle newProfile() noexcept;

  // Forgets a context and all its graphs; false when it is unknown.
  bool eraseContext(Handle handle) noexcept;

  Registry<SaverBackend>& backends() { return backends_; }
  Registry<SaverContext>& contexts() { return contexts_; }
  Registry<SaverDevice>& devices() { return devices_; }
  Registry<SaverProfile>& profiles() { return profiles_; }
  Registry<SaverGraph>& graphs() { return graphs_; }
  Names& names() { return names_; }
  CodeStreams& codeStreams() { return codeStreams_; }
  output::OutputFiles& files() { return files_; }
  std::uint32_t programNumber() const { return files_.programNumber(); }

  // Tensor ids count from 1 for all owners together and never start again.
  std::uint32_t nextTensorId() { return nextTensorId_++; }

 private:
  Status start(Messages& messages);
  // Notes what the client has set, which wins over the environment.
  void note(const output::OutputChanges& changes);
  void reserveNamesOf(const output::OutputSettings& settings);
  template <typename Object>
  Handle newObject(Registry<Object>& registry, std::string_view prefix,
                   Family family) noexcept;

  // Held while files are opened for the first time or switched.
  std::mutex startMutex_;
  std::atomic<bool> started_ = false;
  Names names_;
  CodeStreams codeStreams_;
  Registry<SaverBackend> backends_;
  Registry<SaverContext> contexts_;
  Registry<SaverDevice> devices_;
  Registry<SaverProfile> profiles_;
  Registry<SaverGraph> graphs_;
  std::atomic<std::uint32_t> nextTensorId_ = 1;
  // All that the client has set before the start.
  output::OutputChanges given_;
  bool hasReadEnvironment_ = false;
  // The last member and so the first to end: its footer closes the recording.
  output::OutputFiles files_;
};

// A call that is under way, as the session's end sees it.
struct CallUnderWay {
  std::uint64_t thread = 0;
  CallUnderWay* next = nullptr;
  CallUnderWay* previous = nullptr;
};

// Holds on to the one session for the length of a call. get() is null once the
// session has ended, since a call may come from a client's own exit handler, in
// a forked child, and when there is no memory for a session. The session's end
// waits for calls that are under way on other threads.
class SessionUse {
 public:
  SessionUse();
  ~SessionUse();
  SessionUse(const SessionUse&) = delete;
  SessionUse& operator=(const SessionUse&) = delete;

  Session* get() const { return session_; }

 private:
  Session* session_ = nullptr;
  CallUnderWay call_;
  bool isUnderWay_ = false;
};

}  // namespace kiv::session
