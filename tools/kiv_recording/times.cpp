#include "kiv_recording/times.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace kiv::tool {
namespace {

using Json = nlohmann::ordered_json;
using Durations = std::vector<std::chrono::nanoseconds>;

// The least of the sorted times that so many hundredths do not exceed.
std::chrono::nanoseconds percentile(const Durations& sorted,
                                    std::size_t hundredths) {
  const std::size_t rank = (sorted.size() * hundredths + 99) / 100;
  return sorted[std::max<std::size_t>(rank, 1) - 1];
}

Json figuresOf(Durations times) {
  std::ranges::sort(times);
  std::chrono::nanoseconds total{};
  for (const auto time : times) total += time;
  return {{"count", times.size()},
          {"minimum", times.front().count()},
          {"median", percentile(times, 50).count()},
          {"p90", percentile(times, 90).count()},
          {"p99", percentile(times, 99).count()},
          {"total", total.count()}};
}

double milliseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

}  // namespace

void Times::add(const recording::CallResult& result) {
  if (result.isWarmup) return;
  functions_[result.arguments.function->name].push_back(result.duration);
  if (result.arguments.function != &format::calls::kGraphExecute) {
    calls_.emplace_back(result.call, result.duration);
    return;
  }
  if (executions_.empty() || executions_.back().call != result.call)
    executions_.push_back(
        {result.call,
         std::string(result.arguments.find("graph")->variable),
         {}});
  executions_.back().times.push_back(result.duration);
}

std::string Times::summary() const {
  Durations times;
  for (const Execution& execution : executions_)
    times.insert(times.end(), execution.times.begin(), execution.times.end());
  if (times.empty()) return "";
  std::ranges::sort(times);
  return fmt::format(
      "{} executions: fastest {:.3f} ms, median {:.3f} ms, slowest {:.3f} ms",
      times.size(), milliseconds(times.front()),
      milliseconds(times[times.size() / 2]), milliseconds(times.back()));
}

std::string Times::json(const recording::Recording& recording) const {
  Json json;
  json["unit"] = "ns";
  json["functions"] = Json::object();
  for (const auto& [name, times] : functions_)
    json["functions"][std::string(name)] = figuresOf(times);
  json["executions"] = Json::array();
  std::map<std::string, std::uint64_t> numbers;
  for (const Execution& execution : executions_) {
    Json entry = {{"call", execution.call + 1},
                  {"line", recording.calls()[execution.call].line},
                  {"graph", execution.variable},
                  {"execution", numbers[execution.variable]++}};
    entry.update(figuresOf(execution.times));
    json["executions"].push_back(std::move(entry));
  }
  json["calls"] = Json::array();
  for (const auto& [call, time] : calls_)
    json["calls"].push_back({{"call", call + 1},
                             {"line", recording.calls()[call].line},
                             {"function", recording.functionName(call)},
                             {"time", time.count()}});
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kiv::tool
