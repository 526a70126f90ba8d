#include "writers/config_writers.h"

#include <vector>

#include "format/configs.h"
#include "output/row_text.h"
#include "writers/custom_rules.h"
#include "writers/platform_info_writer.h"

namespace kiv::writers {
namespace {

using format::ConfigFamily;
using format::ConfigOption;
using format::EmptyConfigs;
using format::Part;

constexpr const char* kUnknownOption = "Unknown config option provided: %ld";
constexpr const char* kUnknownDeviceOption =
    "Unknown config option provided: %d";
constexpr Failure kQueueDepthType = {
    Status::kContextInvalidArgument,
    "Unknown or unsupported async execution queue depth type: %ld"};

// By ConfigFamilyId.
constexpr Status kInvalidArguments[] = {
    Status::kBackendInvalidArgument, Status::kContextInvalidArgument,
    Status::kInvalidArgument, Status::kGraphInvalidArgument,
    Status::kInvalidArgument};

// The message takes the option as an int in the device family alone.
void failUnknownOption(CallText& call, const ConfigFamily& family,
                       std::uint32_t option) {
  const Status status = kInvalidArguments[static_cast<std::size_t>(family.id)];
  if (family.id == format::ConfigFamilyId::kDevice)
    return call.fail({status, kUnknownDeviceOption}, static_cast<int>(option));
  call.fail({status, kUnknownOption}, static_cast<long>(option));
}

// ---- custom configs: the variable of a record that its backend's writer knows

// Only the GPU backend's custom configs have a form that is known.
template <typename Config>
Name writeCustom(CallText&, const Config&, NameOf<Family::kConfig>) {
  return {};
}

// An option that the backend does not have is written as the undefined one.
Name writeCustom(CallText& call, const KivContext_Config_t& config,
                 NameOf<Family::kConfig> owner) {
  const auto& custom =
      *static_cast<const KivGpuContext_CustomConfig_t*>(config.customConfig);
  const ConfigOption* option = format::findOption(
      format::kGpuContextOptions, format::enumValue(custom.option));
  if (option == nullptr)
    option = format::findOption(format::kGpuContextOptions,
                                KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED);
  const Name record = call.code().name<Part::kCustomConfig>(owner);
  call.code().emitStruct(format::kGpuContextCustomConfigType, record,
                         option->constant, &custom, {option->member});
  return record;
}

Name writeCustom(CallText& call, const KivGraph_Config_t& config,
                 NameOf<Family::kConfig> owner) {
  const Name record = call.code().name<Part::kCustomConfig>(owner);
  call.code().emitStruct<format::rows::kGpuGraphCustomConfig>(
      record, config.customConfig);
  return record;
}

// ---- other options: the variable of what the record points to, if anything

template <typename Config>
Name writeTarget(CallText&, const Config&, NameOf<Family::kConfig>) {
  return {};
}

Name writeGraphNames(CallText& call, const char* const* names,
                     NameOf<Family::kConfig> owner) {
  output::CodeStream& code = call.code();
  std::size_t count = 0;
  while (names != nullptr && names[count] != nullptr) ++count;
  const Name array = code.name<Part::kGraphNames>(owner);
  code.emitArray("const char* const", array, count + 1, [&](std::size_t i) {
    code.appendLiteral(i < count ? names[i] : nullptr);
  });
  return array;
}

Name writeTarget(CallText& call, const KivContext_Config_t& config,
                 NameOf<Family::kConfig> owner) {
  const std::uint32_t option = format::enumValue(config.option);
  if (option == KIV_CONTEXT_CONFIG_ENABLE_GRAPHS)
    return writeGraphNames(call, config.enableGraphs, owner);
  if (option != KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH) return {};
  const std::uint32_t type = format::enumValue(config.asyncExeQueueDepth.type);
  if (type != KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC)
    call.fail(kQueueDepthType, static_cast<long>(type));
  return {};
}

Name writeTarget(CallText& call, const KivDevice_Config_t& config,
                 NameOf<Family::kConfig> owner) {
  if (config.hardwareInfo == nullptr) return {};
  const auto info = call.code().name<Part::kPlatformInfo>(owner);
  writePlatformInfo(call, *config.hardwareInfo, info);
  return info;
}

// ---- records and lists ----

// Writes a record behind what `write` writes for it, whose variable it refers
// to.
template <typename Config, typename Write>
Name writeRecord(CallText& call, const ConfigFamily& family,
                 const Config& config, const ConfigOption& option,
                 std::string_view base, Write&& write) {
  const auto name = call.unique<Family::kConfig>(
      call.code().joined({base, "_", option.word}).text);
  const Name target = write(name);
  if (call.hasFailed()) return {};
  call.code().emitStruct(family.type, name, option.constant, &config,
                         {option.member, target});
  return name;
}

template <typename Config>
Name writeCustomConfig(CallText& call, const ConfigFamily& family,
                       const Config& config, std::string_view base) {
  ConfigOption option = family.options.front();
  if (config.customConfig == nullptr)
    return writeRecord(call, family, config, option, base,
                       [](NameOf<Family::kConfig>) { return Name{}; });
  if (!mayWriteCustomConfig(call, family.id)) return {};
  option.word = family.customWord;
  option.member.lead = family.customLead;
  option.member.kind = format::FieldKind::kAddress;
  return writeRecord(call, family, config, option, base,
                     [&](NameOf<Family::kConfig> name) {
                       return writeCustom(call, config, name);
                     });
}

// The record's variable; empty when it is skipped or refused.
template <typename Config>
Name writeConfig(CallText& call, const ConfigFamily& family,
                 const Config& config, std::string_view base) {
  const std::uint32_t number = format::enumValue(config.option);
  if (number == format::kCustomOption)
    return writeCustomConfig(call, family, config, base);
  const ConfigOption* option = format::findOption(family.options, number);
  if (option == nullptr) {
    failUnknownOption(call, family, number);
    return {};
  }
  return writeRecord(call, family, config, *option, base,
                     [&](NameOf<Family::kConfig> name) {
                       return writeTarget(call, config, name);
                     });
}

template <typename Config>
Name writeList(CallText& call, const ConfigFamily& family, const Config** list,
               std::string_view recordBase, std::string_view arrayBase) {
  const bool isNull = list == nullptr;
  const bool isEmpty = isNull || *list == nullptr;
  if ((isNull && family.empty == EmptyConfigs::kNullForNull) ||
      (isEmpty && family.empty == EmptyConfigs::kNullForEmpty))
    return {};
  std::vector<Name> records;
  for (; !isNull && *list != nullptr && !call.hasFailed(); ++list) {
    const Name record = writeConfig(call, family, **list, recordBase);
    if (record.isEmpty()) continue;
    records.push_back(record);
    if (family.blankLines) call.code().emitBlankLine();
  }
  if (call.hasFailed()) return {};
  records.emplace_back();
  const Name array =
      call.unique(call.code().joined({arrayBase, "_config"}).text);
  call.code().emitAddressArray(family.pointerType, array, records);
  return array;
}

}  // namespace

Name writeConfigs(CallText& call, const KivBackend_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase) {
  return writeList(call, format::configs::kBackend, list, recordBase,
                   arrayBase);
}

Name writeConfigs(CallText& call, const KivContext_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase) {
  return writeList(call, format::configs::kContext, list, recordBase,
                   arrayBase);
}

Name writeConfigs(CallText& call, const KivDevice_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase) {
  return writeList(call, format::configs::kDevice, list, recordBase, arrayBase);
}

Name writeConfigs(CallText& call, const KivGraph_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase) {
  return writeList(call, format::configs::kGraph, list, recordBase, arrayBase);
}

Name writeConfigs(CallText& call, const KivProfile_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase) {
  return writeList(call, format::configs::kProfile, list, recordBase,
                   arrayBase);
}

}  // namespace kiv::writers
