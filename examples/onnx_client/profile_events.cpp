#include "profile_events.h"

#include <iostream>
#include <span>

#include "api_call.h"

namespace onnx_client {
namespace {

using Events = std::span<const KivProfile_EventId_t>;

// Deeper than any backend nests events.
constexpr int kDeepest = 16;

void printEvent(const KivProfile_EventData_t& data, int depth) {
  const char* name = data.identifier != nullptr ? data.identifier : "unnamed";
  std::cout << "event " << std::string(static_cast<std::size_t>(depth) * 2, ' ')
            << name << " type=" << data.type << " unit=" << data.unit
            << " value=" << data.value << '\n';
}

void listAll(const Api& api, Events events, int depth) {
  for (const KivProfile_EventId_t event : events) {
    KivProfile_EventData_t data{};
    call("profileGetEventData", api.profileGetEventData, event, &data);
    printEvent(data, depth);
    const KivProfile_EventId_t* below = nullptr;
    std::uint32_t count = 0;
    call("profileGetSubEvents", api.profileGetSubEvents, event, &below, &count);
    if (depth < kDeepest && below != nullptr)
      listAll(api, Events(below, count), depth + 1);
  }
}

}  // namespace

void listEvents(const Api& api, Kiv_ProfileHandle_t profile) {
  const KivProfile_EventId_t* events = nullptr;
  std::uint32_t count = 0;
  call("profileGetEvents", api.profileGetEvents, profile, &events, &count);
  if (events != nullptr) listAll(api, Events(events, count), 0);
}

}  // namespace onnx_client
