#pragma once

#include <initializer_list>
#include <vector>

namespace kiv::test {

// A list of configs for a call: their addresses and null.
template <typename Config>
class List {
 public:
  List(std::initializer_list<Config> configs) : configs_(configs) {
    for (const Config& config : configs_) pointers_.push_back(&config);
    pointers_.push_back(nullptr);
  }
  List(const List&) = delete;
  List& operator=(const List&) = delete;

  operator const Config**() { return pointers_.data(); }

 private:
  const std::vector<Config> configs_;
  std::vector<const Config*> pointers_;
};

// A config of the option with everything else zero or null.
template <typename Config>
Config configOf(int option) {
  Config config{};
  config.option = static_cast<decltype(config.option)>(option);
  return config;
}

// One with a member of its union set.
template <typename Config, typename Value>
Config configOf(int option, Value Config::*member, Value value) {
  Config config = configOf<Config>(option);
  config.*member = value;
  return config;
}

}  // namespace kiv::test
