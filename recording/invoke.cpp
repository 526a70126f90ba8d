#include "recording/invoke.h"

#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

namespace kiv::recording {
namespace {

using Table = KivInterface_Implementation_t;
using Invoker = Kiv_ErrorHandle_t (*)(const Table&, const Value*);

// An argument as the parameter wants it: a pointer, a number, an enumeration,
// or a record by value.
template <typename Parameter>
Parameter as(const Value& value) {
  if constexpr (std::is_pointer_v<Parameter>) {
    return reinterpret_cast<Parameter>(static_cast<std::uintptr_t>(value.bits));
  } else if constexpr (std::is_class_v<Parameter>) {
    return *value.pointer<const Parameter>();
  } else {
    return static_cast<Parameter>(value.bits);
  }
}

template <auto member, typename... Parameters, std::size_t... index>
Kiv_ErrorHandle_t callWith(const Table& table, const Value* values,
                           Kiv_ErrorHandle_t (*)(Parameters...),
                           std::index_sequence<index...>) {
  return (table.*member)(as<Parameters>(values[index])...);
}

template <typename... Parameters>
constexpr auto indexes(Kiv_ErrorHandle_t (*)(Parameters...)) {
  return std::index_sequence_for<Parameters...>{};
}

template <auto member>
Kiv_ErrorHandle_t call(const Table& table, const Value* values) {
  constexpr std::remove_cvref_t<decltype(table.*member)> kFunction = nullptr;
  return callWith<member>(table, values, kFunction, indexes(kFunction));
}

struct Row {
  const format::Function* function;
  Invoker invoker;
};

constexpr std::array kRows = {
    Row{&format::calls::kPropertyHasCapability,
        call<&Table::propertyHasCapability>},
    Row{&format::calls::kBackendCreate, call<&Table::backendCreate>},
    Row{&format::calls::kBackendSetConfig, call<&Table::backendSetConfig>},
    Row{&format::calls::kBackendRegisterOpPackage,
        call<&Table::backendRegisterOpPackage>},
    Row{&format::calls::kBackendGetSupportedOperations,
        call<&Table::backendGetSupportedOperations>},
    Row{&format::calls::kBackendValidateOpConfig,
        call<&Table::backendValidateOpConfig>},
    Row{&format::calls::kBackendFree, call<&Table::backendFree>},
    Row{&format::calls::kContextCreate, call<&Table::contextCreate>},
    Row{&format::calls::kContextSetConfig, call<&Table::contextSetConfig>},
    Row{&format::calls::kContextGetBinarySize,
        call<&Table::contextGetBinarySize>},
    Row{&format::calls::kContextGetBinary, call<&Table::contextGetBinary>},
    Row{&format::calls::kContextCreateFromBinary,
        call<&Table::contextCreateFromBinary>},
    Row{&format::calls::kContextFree, call<&Table::contextFree>},
    Row{&format::calls::kGraphCreate, call<&Table::graphCreate>},
    Row{&format::calls::kGraphCreateSubgraph,
        call<&Table::graphCreateSubgraph>},
    Row{&format::calls::kGraphSetConfig, call<&Table::graphSetConfig>},
    Row{&format::calls::kGraphAddNode, call<&Table::graphAddNode>},
    Row{&format::calls::kGraphFinalize, call<&Table::graphFinalize>},
    Row{&format::calls::kGraphRetrieve, call<&Table::graphRetrieve>},
    Row{&format::calls::kGraphExecute, call<&Table::graphExecute>},
    Row{&format::calls::kTensorCreateContextTensor,
        call<&Table::tensorCreateContextTensor>},
    Row{&format::calls::kTensorCreateGraphTensor,
        call<&Table::tensorCreateGraphTensor>},
    Row{&format::calls::kProfileCreate, call<&Table::profileCreate>},
    Row{&format::calls::kProfileSetConfig, call<&Table::profileSetConfig>},
    Row{&format::calls::kProfileGetEvents, call<&Table::profileGetEvents>},
    Row{&format::calls::kProfileGetSubEvents,
        call<&Table::profileGetSubEvents>},
    Row{&format::calls::kProfileGetEventData,
        call<&Table::profileGetEventData>},
    Row{&format::calls::kProfileGetExtendedEventData,
        call<&Table::profileGetExtendedEventData>},
    Row{&format::calls::kProfileFree, call<&Table::profileFree>},
    Row{&format::calls::kDeviceGetPlatformInfo,
        call<&Table::deviceGetPlatformInfo>},
    Row{&format::calls::kDeviceGetInfrastructure,
        call<&Table::deviceGetInfrastructure>},
    Row{&format::calls::kDeviceCreate, call<&Table::deviceCreate>},
    Row{&format::calls::kDeviceSetConfig, call<&Table::deviceSetConfig>},
    Row{&format::calls::kDeviceGetInfo, call<&Table::deviceGetInfo>},
    Row{&format::calls::kDeviceFree, call<&Table::deviceFree>},
    Row{&format::calls::kContextValidateBinary,
        call<&Table::contextValidateBinary>},
    Row{&format::calls::kContextCreateFromBinaryWithSignal,
        call<&Table::contextCreateFromBinaryWithSignal>},
};

// By slot.
constexpr std::array<Invoker, sizeof(Table) / sizeof(void*)> kInvokers = [] {
  std::array<Invoker, sizeof(Table) / sizeof(void*)> invokers{};
  for (const Row& row : kRows)
    invokers[row.function->slot / sizeof(void*)] = row.invoker;
  return invokers;
}();

}  // namespace

Kiv_ErrorHandle_t invoke(const KivInterface_Implementation_t& table,
                         const Arguments& arguments) {
  const std::size_t slot = arguments.function->slot / sizeof(void*);
  return kInvokers[slot](table, arguments.values.data());
}

bool hasFunction(const KivInterface_Implementation_t& table,
                 const format::Function& function) {
  void* pointer = nullptr;
  std::memcpy(&pointer,
              reinterpret_cast<const std::byte*>(&table) + function.slot,
              sizeof(pointer));
  return pointer != nullptr;
}

}  // namespace kiv::recording
