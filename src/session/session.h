#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "output/output_files.h"
#include "session/backend_table.h"
#include "session/graph_index.h"
#include "session/names.h"
#include "session/objects.h"
#include "session/registry.h"

namespace kiv::session {

// All state of the library: the output files, the recorded objects and the
// names of the generated program. Made on first use; its end, when the library
// is unloaded or the process exits, finishes the files. From any thread.
class Session {
 public:
  // Opens the output files unless they are open.
  Status ensureStarted() { return files_.start(); }

  // New objects under the next variable of their kind ("context_0",
  // "context_1", ...).
  Handle newContext();
  Handle newDevice();
  Handle newProfile();

  // A graph by handle, through its context; null when either is unknown.
  std::shared_ptr<SaverGraph> findGraph(Handle handle) const;
  std::shared_ptr<SaverContext> contextOfGraph(Handle handle) const;

  // Makes a graph known under the handle that is returned.
  Handle registerGraph(SaverContext& context, const std::string& name,
                       std::shared_ptr<SaverGraph> graph);

  // Forgets a context and all its graphs; false when it is unknown.
  bool eraseContext(Handle handle);

  Registry<SaverContext>& contexts() { return contexts_; }
  Registry<SaverDevice>& devices() { return devices_; }
  Registry<SaverProfile>& profiles() { return profiles_; }
  BackendTable& backends() { return backends_; }
  Names& names() { return names_; }
  output::OutputFiles& files() { return files_; }
  std::uint32_t program() const { return files_.program(); }

  // Tensor ids count from 1 for all owners together and never start again.
  std::uint32_t nextTensorId() { return nextTensorId_++; }

 private:
  template <typename Object>
  Handle newObject(Registry<Object>& registry, std::string_view prefix,
                   Family family);

  Names names_;
  output::OutputFiles files_{
      [this](std::string_view name) { names_.reserve(name); }};
  Registry<SaverContext> contexts_;
  Registry<SaverProfile> profiles_;
  Registry<SaverDevice> devices_;
  GraphIndex graphs_;
  BackendTable backends_;
  std::atomic<std::uint32_t> nextTensorId_ = 1;
};

// Holds on to the one session for the length of a call. get() is null once the
// session has ended, since a call may come from a client's own exit handler,
// and in a forked child. The session's end waits for calls that are under way
// on other threads.
class SessionUse {
 public:
  SessionUse();
  ~SessionUse();
  SessionUse(const SessionUse&) = delete;
  SessionUse& operator=(const SessionUse&) = delete;

  Session* get() const { return session_; }

 private:
  static void leave();

  Session* session_ = nullptr;
  bool isCounted_ = false;
};

}  // namespace kiv::session
