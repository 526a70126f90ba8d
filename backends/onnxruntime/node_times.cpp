#include "node_times.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_map>

#include "failure.h"

namespace kiv::ort {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kSuffix = "_kernel_time";

[[noreturn]] void throwNoTimes(const std::string& why) {
  throw Failure(KIV_PROFILE_ERROR_GENERAL, why);
}

bool isNode(const Json& event) {
  return event.value("cat", "") == "Node" &&
         event.value("name", "").ends_with(kSuffix);
}

std::string nameOf(const Json& event) {
  std::string name = event.value("name", "");
  name.resize(name.size() - kSuffix.size());
  return name + " (" + event.value("/args/op_name"_json_pointer, "") + ")";
}

}  // namespace

std::vector<NodeTime> readNodeTimes(const std::string& file) {
  std::ifstream stream(file);
  const Json events = Json::parse(stream, nullptr, false);
  if (!events.is_array()) throwNoTimes("ONNX Runtime's profile cannot be read");
  std::vector<NodeTime> nodes;
  std::unordered_map<std::string, std::size_t> places;
  for (const Json& event : events) {
    if (!isNode(event)) continue;
    const auto [place, isNew] = places.emplace(nameOf(event), nodes.size());
    if (isNew) nodes.push_back({place->first, 0});
    nodes[place->second].microseconds += event.value("dur", std::uint64_t{0});
  }
  return nodes;
}

}  // namespace kiv::ort
