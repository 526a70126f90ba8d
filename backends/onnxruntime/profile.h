#pragma once

// Profiles and their events:
//
//   profile->add({EventType::kExecute, "execute main", 120}, {{...}, {...}});
//
//   finalize NAME      building a graph: "build model", "create session"
//   load               loading a binary
//   execute NAME       an execution: "compute", "copy outputs"
//   nodes NAME         all nodes of the executions so far, each below it; in
//                      profiles of the detailed level only
//
// All values are microseconds. Any thread may use a profile.

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "KivProfile.h"
#include "session.h"

namespace kiv::ort {

enum class EventType : std::uint32_t {
  kFinalize = 1,
  kLoad = 2,
  kExecute = 3,
  kNodes = 4,
  kStep = 5,
  kNode = 6,
};

struct EventValues {
  EventType type;
  std::string identifier;
  std::uint64_t microseconds;
};

// An event that clients read by its id; never changed.
struct Event {
  EventValues values;
  std::uint64_t timestamp;
  std::vector<KivProfile_EventId_t> subEvents;
};

// Null for an unknown id.
std::shared_ptr<const Event> findEvent(KivProfile_EventId_t id);

class Profile {
 public:
  explicit Profile(KivProfile_Level_t level) : level_(level) {}
  ~Profile();
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  bool timesNodes() const { return level_ >= KIV_PROFILE_LEVEL_DETAILED; }
  // The most events that are kept, those below others not counted.
  void setMostEvents(std::uint64_t count);

  void add(const EventValues& event, std::span<const EventValues> subEvents);

  // Takes the times of a session's nodes later, if the session times them.
  void watch(const std::string& graph, std::weak_ptr<const Session> session);
  // Adds events for the nodes of the sessions that are watched.
  void collectNodes();

  // The events so far, in an array that stays until the profile is freed.
  std::span<const KivProfile_EventId_t> events();

 private:
  struct Watched {
    std::string graph;
    std::weak_ptr<const Session> session;
  };

  const KivProfile_Level_t level_;
  std::mutex mutex_;
  std::uint64_t mostEvents_ = UINT64_MAX;
  std::vector<KivProfile_EventId_t> events_;
  std::vector<Watched> watched_;
  std::deque<std::vector<KivProfile_EventId_t>> arrays_;
};

}  // namespace kiv::ort
