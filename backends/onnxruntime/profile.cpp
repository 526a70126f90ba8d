#include "profile.h"

#include <chrono>
#include <unordered_map>
#include <utility>

#include "log.h"

namespace kiv::ort {
namespace {

std::uint64_t nanoseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

// The events of all profiles by their ids.
class EventTable {
 public:
  static EventTable& instance() {
    static auto* const kTable = new EventTable;
    return *kTable;
  }

  KivProfile_EventId_t add(Event event) {
    auto shared = std::make_shared<const Event>(std::move(event));
    const std::scoped_lock lock(mutex_);
    events_.emplace(++last_, std::move(shared));
    return last_;
  }

  std::shared_ptr<const Event> find(KivProfile_EventId_t id) const {
    const std::scoped_lock lock(mutex_);
    const auto found = events_.find(id);
    return found == events_.end() ? nullptr : found->second;
  }

  void remove(KivProfile_EventId_t id) {
    const std::shared_ptr<const Event> event = find(id);
    if (event == nullptr) return;
    for (const KivProfile_EventId_t below : event->subEvents) remove(below);
    const std::scoped_lock lock(mutex_);
    events_.erase(id);
  }

 private:
  mutable std::mutex mutex_;
  KivProfile_EventId_t last_ = 0;
  std::unordered_map<KivProfile_EventId_t, std::shared_ptr<const Event>>
      events_;
};

}  // namespace

std::shared_ptr<const Event> findEvent(KivProfile_EventId_t id) {
  return EventTable::instance().find(id);
}

Profile::~Profile() {
  for (const KivProfile_EventId_t id : events_)
    EventTable::instance().remove(id);
}

void Profile::setMostEvents(std::uint64_t count) {
  const std::scoped_lock lock(mutex_);
  mostEvents_ = count;
}

void Profile::add(const EventValues& event,
                  std::span<const EventValues> subEvents) {
  const std::scoped_lock lock(mutex_);
  if (events_.size() >= mostEvents_) {
    log(KIV_LOG_LEVEL_WARN,
        "the profile is full, so \"" + event.identifier + "\" is left out");
    return;
  }
  EventTable& table = EventTable::instance();
  const std::uint64_t now = nanoseconds();
  Event added{event, now, {}};
  for (const EventValues& below : subEvents)
    added.subEvents.push_back(table.add({below, now, {}}));
  events_.push_back(table.add(std::move(added)));
}

void Profile::watch(const std::string& graph,
                    std::weak_ptr<const Session> session) {
  if (!timesNodes()) return;
  const std::scoped_lock lock(mutex_);
  watched_.push_back({graph, std::move(session)});
}

void Profile::collectNodes() {
  std::vector<Watched> watched;
  {
    const std::scoped_lock lock(mutex_);
    watched = watched_;
  }
  for (const Watched& entry : watched) {
    const auto session = entry.session.lock();
    if (session == nullptr) continue;
    std::uint64_t total = 0;
    std::vector<EventValues> nodes;
    for (NodeTime& node : session->takeNodeTimes()) {
      total += node.microseconds;
      nodes.push_back(
          {EventType::kNode, std::move(node.name), node.microseconds});
    }
    if (!nodes.empty())
      add({EventType::kNodes, "nodes " + entry.graph, total}, nodes);
  }
}

std::span<const KivProfile_EventId_t> Profile::events() {
  const std::scoped_lock lock(mutex_);
  if (arrays_.empty() || arrays_.back().size() != events_.size())
    arrays_.push_back(events_);
  return arrays_.back();
}

}  // namespace kiv::ort
