#pragma once

#include <span>
#include <string>

#include "writers/custom_rules.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// One option of a config family. `value` gives the text behind the option's
// name for a record that is to be called `name`, having written what the text
// refers to; it returns a failure for a value that cannot be written.
template <typename Config>
struct ConfigOption {
  std::uint32_t tag;
  const char* fieldWord;
  const char* constant;
  Status (*value)(WriteScope& scope, const Config& config,
                  const std::string& name, std::string& text);
};

// What the five config families differ in.
template <typename Config>
struct ConfigFamily {
  ConfigFamilyId id;
  const char* typeName;
  Failure unknownOption;
  // Whether that message takes the option as an int instead of a long.
  bool optionAsInt;
  const char* customConstant;
  const char* nullCustomText;
  std::span<const ConfigOption<Config>> options;
  // Writes the custom config of a backend whose form is known, under the name
  // that base + "_" + customWord gives; null where there is none.
  const char* customWord;
  void (*writeCustom)(WriteScope& scope, const void* custom,
                      const std::string& name);
};

// "type name = {option, value};"
inline void emitConfig(WriteScope& scope, const char* type,
                       const std::string& name, const char* option,
                       const std::string& value) {
  scope.code.emitStruct(type, name, {option, value});
}

template <typename Config>
std::string nameConfig(WriteScope& scope, const std::string& base,
                       const char* fieldWord) {
  return scope.names.unique(base + '_' + fieldWord, session::Family::kConfig);
}

template <typename Config>
Status writeCustomConfig(WriteScope& scope, const ConfigFamily<Config>& family,
                         const Config& config, const std::string& base,
                         output::Texts& pointers) {
  if (config.customConfig == nullptr) {
    const std::string name = nameConfig<Config>(scope, base, "customConfig");
    emitConfig(scope, family.typeName, name, family.customConstant,
               family.nullCustomText);
    pointers.push_back('&' + name);
    return Status::kOk;
  }
  const CustomDecision decision = decideCustomConfig(scope, family.id);
  if (decision.verdict != CustomVerdict::kWrite) return decision.status;
  const std::string name = nameConfig<Config>(scope, base, family.customWord);
  family.writeCustom(scope, config.customConfig, name);
  pointers.push_back('&' + name);
  return Status::kOk;
}

// Writes one record as a variable called base + "_" + the option's word + a
// counter, and appends its address to `pointers`. A record that is skipped
// leaves no trace there.
template <typename Config>
Status writeConfig(WriteScope& scope, const ConfigFamily<Config>& family,
                   const Config& config, const std::string& base,
                   output::Texts& pointers) {
  constexpr std::uint32_t kCustomTag = 0;
  const std::uint32_t tag = enumValue(config.option);
  if (tag == kCustomTag)
    return writeCustomConfig(scope, family, config, base, pointers);
  for (const ConfigOption<Config>& option : family.options) {
    if (option.tag != tag) continue;
    const std::string name = nameConfig<Config>(scope, base, option.fieldWord);
    std::string text;
    if (const Status s = option.value(scope, config, name, text); !ok(s))
      return s;
    emitConfig(scope, family.typeName, name, option.constant, text);
    pointers.push_back('&' + name);
    return Status::kOk;
  }
  if (family.optionAsInt)
    return scope.fail(family.unknownOption, static_cast<int>(tag));
  return scope.fail(family.unknownOption, static_cast<long>(tag));
}

}  // namespace kiv::writers
