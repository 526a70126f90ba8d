#pragma once

#include <string>

#include "recorders/recorded_call.h"
#include "writers/config_family.h"

namespace kiv::recorders {

// How a config list without records is passed on.
enum class NoConfigs {
  kArray,        // as an array that holds NULL alone
  kNullForNull,  // a null list as "NULL", an empty one as an array
  kNullForNullOrEmpty
};

struct ConfigArrayStyle {
  NoConfigs noConfigs = NoConfigs::kArray;
  // Sets each record apart by a blank line.
  bool blankLines = false;
};

// Writes a client's config list, a null-terminated array of pointers: a record
// for each element, called recordBase + "_" + the option's word + a counter,
// and the array of their addresses, arrayBase + "_config" + a counter, ended by
// NULL. Returns the argument text: the array's name, or "NULL".
template <typename Config>
std::string writeConfigArray(RecordedCall& call,
                             const writers::ConfigFamily<Config>& family,
                             const Config** list, const std::string& recordBase,
                             const std::string& arrayBase,
                             ConfigArrayStyle style = {}) {
  const bool isNull = list == nullptr;
  const bool isEmpty = isNull || *list == nullptr;
  if ((isNull && style.noConfigs == NoConfigs::kNullForNull) ||
      (isEmpty && style.noConfigs == NoConfigs::kNullForNullOrEmpty))
    return "NULL";

  output::Texts pointers;
  for (; !isNull && *list != nullptr && ok(call.status()); ++list) {
    const std::size_t written = pointers.size();
    call.write([&](writers::WriteScope& scope) {
      return writers::writeConfig(scope, family, **list, recordBase, pointers);
    });
    if (style.blankLines && pointers.size() > written)
      call.code().emitBlankLine();
  }
  if (!ok(call.status())) return {};
  pointers.emplace_back("NULL");
  std::string array = call.names().unique(arrayBase + "_config");
  call.code().emitArray("const " + std::string(family.typeName) + '*', array,
                        pointers);
  return array;
}

}  // namespace kiv::recorders
