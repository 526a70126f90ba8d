#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "KivInterface.h"

// The recorded functions of the interface, a row each:
//
//   VALIDATE(error, interface.graphFinalize(main_graph, profile_0, NULL));
//
//   macro(variable, object.function(argument, argument, ...));
//
// Constant; from any thread.
namespace kiv::format {

// The words of a call's statement.
inline constexpr std::string_view kMacro = "VALIDATE";
inline constexpr std::string_view kErrorVariable = "error";
inline constexpr std::string_view kInterfaceVariable = "interface";
inline constexpr std::string_view kLogHandleVariable = "loghandle";
inline constexpr std::string_view kDataFileVariable = "fp";

enum class ArgumentKind : std::uint8_t {
  // The program's log handle.
  kLogHandle,
  // The variable of an object that an earlier call created; NULL where a null
  // handle is taken.
  kBackend,
  kDevice,
  kContext,
  kGraph,
  kProfile,
  // Always NULL.
  kSignal,
  // An array of pointers to config records, or NULL.
  kBackendConfigs,
  kContextConfigs,
  kDeviceConfigs,
  kGraphConfigs,
  kProfileConfigs,
  // A client's text between quotes, or NULL; the second form is escaped.
  kText,
  kEscapedText,
  // Decimal numbers.
  kU32,
  kU64,
  // 32 and 64 bits: "(type)number".
  kEnum,
  kEventId,
  // An array of bytes read from the data file.
  kBinary,
  // Memory that the program allocates, of as many bytes as the next argument
  // says.
  kBuffer,
  // A variable by value.
  kOpConfig,
  // "&" and a variable, which the call may change.
  kTensor,
  // An array; its length is the next argument.
  kTensors,

  // Out-arguments: "&" and a variable that the call's statements declare, or
  // NULL where the client wants no result.
  kOutHandle,
  kOut,
};

constexpr bool isOut(ArgumentKind kind) {
  return kind >= ArgumentKind::kOutHandle;
}

struct Argument {
  // The parameter's name in the API's headers.
  std::string_view name;
  ArgumentKind kind;
  // The type of the cast, or of the variable that is declared.
  std::string_view type = {};
};

struct Function {
  std::string_view name;
  // bytes from the start of the implementation table
  std::size_t slot;
  std::span<const Argument> arguments;
};

namespace arguments {

using enum ArgumentKind;

inline constexpr Argument kPropertyHasCapability[] = {
    {"key", kEnum, "KivProperty_Key_t"}};
inline constexpr Argument kBackendCreate[] = {
    {"logger", kLogHandle},
    {"config", kBackendConfigs},
    {"backend", kOutHandle, "Kiv_BackendHandle_t"}};
inline constexpr Argument kBackendSetConfig[] = {{"backend", kBackend},
                                                 {"config", kBackendConfigs}};
inline constexpr Argument kBackendRegisterOpPackage[] = {
    {"backend", kBackend},
    {"packagePath", kEscapedText},
    {"interfaceProvider", kEscapedText},
    {"target", kEscapedText}};
inline constexpr Argument kBackendGetSupportedOperations[] = {
    {"backend", kBackend},
    {"numOperations", kOut, "uint32_t"},
    {"operations", kOut, "const KivBackend_OperationName_t*"}};
inline constexpr Argument kBackendValidateOpConfig[] = {
    {"backend", kBackend}, {"opConfig", kOpConfig}};
inline constexpr Argument kBackendFree[] = {{"backend", kBackend}};

inline constexpr Argument kContextCreate[] = {
    {"backend", kBackend},
    {"device", kDevice},
    {"config", kContextConfigs},
    {"context", kOutHandle, "Kiv_ContextHandle_t"}};
inline constexpr Argument kContextSetConfig[] = {{"context", kContext},
                                                 {"config", kContextConfigs}};
inline constexpr Argument kContextGetBinarySize[] = {
    {"context", kContext}, {"binarySize", kOut, "Kiv_ContextBinarySize_t"}};
inline constexpr Argument kContextGetBinary[] = {
    {"context", kContext},
    {"buffer", kBuffer, "uint8_t*"},
    {"bufferSize", kU64},
    {"writtenSize", kOut, "Kiv_ContextBinarySize_t"}};
// The second has a signal behind the profile.
inline constexpr Argument kContextCreateFromBinaryWithSignal[] = {
    {"backend", kBackend},       {"device", kDevice},
    {"config", kContextConfigs}, {"binary", kBinary, "uint8_t"},
    {"binarySize", kU64},        {"context", kOutHandle, "Kiv_ContextHandle_t"},
    {"profile", kProfile},       {"signal", kSignal}};
inline constexpr std::span<const Argument> kContextCreateFromBinary =
    std::span(kContextCreateFromBinaryWithSignal).first<7>();
inline constexpr Argument kContextValidateBinary[] = {
    {"backend", kBackend},
    {"device", kDevice},
    {"config", kContextConfigs},
    {"binary", kBinary, "uint8_t"},
    {"binarySize", kU64}};
inline constexpr Argument kContextFree[] = {{"context", kContext},
                                            {"profile", kProfile}};

inline constexpr Argument kGraphCreate[] = {
    {"context", kContext},
    {"name", kText},
    {"config", kGraphConfigs},
    {"graph", kOutHandle, "Kiv_GraphHandle_t"}};
inline constexpr Argument kGraphCreateSubgraph[] = {
    {"graph", kGraph},
    {"name", kText},
    {"subgraph", kOutHandle, "Kiv_GraphHandle_t"}};
inline constexpr Argument kGraphSetConfig[] = {{"graph", kGraph},
                                               {"config", kGraphConfigs}};
inline constexpr Argument kGraphAddNode[] = {{"graph", kGraph},
                                             {"opConfig", kOpConfig}};
inline constexpr Argument kGraphFinalize[] = {
    {"graph", kGraph}, {"profile", kProfile}, {"signal", kSignal}};
inline constexpr Argument kGraphRetrieve[] = {
    {"context", kContext},
    {"name", kText},
    {"graph", kOutHandle, "Kiv_GraphHandle_t"}};
inline constexpr Argument kGraphExecute[] = {
    {"graph", kGraph},     {"inputs", kTensors}, {"numInputs", kU32},
    {"outputs", kTensors}, {"numOutputs", kU32}, {"profile", kProfile},
    {"signal", kSignal}};

inline constexpr Argument kTensorCreateContextTensor[] = {
    {"context", kContext}, {"tensor", kTensor, "Kiv_Tensor_t"}};
inline constexpr Argument kTensorCreateGraphTensor[] = {
    {"graph", kGraph}, {"tensor", kTensor, "Kiv_Tensor_t"}};

inline constexpr Argument kProfileCreate[] = {
    {"backend", kBackend},
    {"level", kEnum, "KivProfile_Level_t"},
    {"profile", kOutHandle, "Kiv_ProfileHandle_t"}};
inline constexpr Argument kProfileSetConfig[] = {{"profile", kProfile},
                                                 {"config", kProfileConfigs}};
inline constexpr Argument kProfileGetEvents[] = {
    {"profile", kProfile},
    {"events", kOut, "const KivProfile_EventId_t*"},
    {"numEvents", kOut, "uint32_t"}};
inline constexpr Argument kProfileGetSubEvents[] = {
    {"event", kEventId, "KivProfile_EventId_t"},
    {"subEvents", kOut, "const KivProfile_EventId_t*"},
    {"numSubEvents", kOut, "uint32_t"}};
inline constexpr Argument kProfileGetEventData[] = {
    {"event", kEventId, "KivProfile_EventId_t"},
    {"data", kOut, "KivProfile_EventData_t"}};
inline constexpr Argument kProfileGetExtendedEventData[] = {
    {"event", kEventId, "KivProfile_EventId_t"},
    {"data", kOut, "KivProfile_ExtendedEventData_t"}};
inline constexpr Argument kProfileFree[] = {{"profile", kProfile}};

inline constexpr Argument kDeviceGetPlatformInfo[] = {
    {"logger", kLogHandle},
    {"platformInfo", kOut, "const KivDevice_PlatformInfo_t*"}};
inline constexpr Argument kDeviceGetInfrastructure[] = {
    {"infrastructure", kOut, "KivDevice_Infrastructure_t"}};
inline constexpr Argument kDeviceCreate[] = {
    {"logger", kLogHandle},
    {"config", kDeviceConfigs},
    {"device", kOutHandle, "Kiv_DeviceHandle_t"}};
inline constexpr Argument kDeviceSetConfig[] = {{"device", kDevice},
                                                {"config", kDeviceConfigs}};
inline constexpr Argument kDeviceGetInfo[] = {
    {"device", kDevice},
    {"platformInfo", kOut, "const KivDevice_PlatformInfo_t*"}};
inline constexpr Argument kDeviceFree[] = {{"device", kDevice}};

}  // namespace arguments

namespace calls {

using Table = KivInterface_Implementation_t;

inline constexpr Function kPropertyHasCapability = {
    "propertyHasCapability", offsetof(Table, propertyHasCapability),
    arguments::kPropertyHasCapability};
inline constexpr Function kBackendCreate = {
    "backendCreate", offsetof(Table, backendCreate), arguments::kBackendCreate};
inline constexpr Function kBackendSetConfig = {
    "backendSetConfig", offsetof(Table, backendSetConfig),
    arguments::kBackendSetConfig};
inline constexpr Function kBackendRegisterOpPackage = {
    "backendRegisterOpPackage", offsetof(Table, backendRegisterOpPackage),
    arguments::kBackendRegisterOpPackage};
inline constexpr Function kBackendGetSupportedOperations = {
    "backendGetSupportedOperations",
    offsetof(Table, backendGetSupportedOperations),
    arguments::kBackendGetSupportedOperations};
inline constexpr Function kBackendValidateOpConfig = {
    "backendValidateOpConfig", offsetof(Table, backendValidateOpConfig),
    arguments::kBackendValidateOpConfig};
inline constexpr Function kBackendFree = {
    "backendFree", offsetof(Table, backendFree), arguments::kBackendFree};
inline constexpr Function kContextCreate = {
    "contextCreate", offsetof(Table, contextCreate), arguments::kContextCreate};
inline constexpr Function kContextSetConfig = {
    "contextSetConfig", offsetof(Table, contextSetConfig),
    arguments::kContextSetConfig};
inline constexpr Function kContextGetBinarySize = {
    "contextGetBinarySize", offsetof(Table, contextGetBinarySize),
    arguments::kContextGetBinarySize};
inline constexpr Function kContextGetBinary = {
    "contextGetBinary", offsetof(Table, contextGetBinary),
    arguments::kContextGetBinary};
inline constexpr Function kContextCreateFromBinary = {
    "contextCreateFromBinary", offsetof(Table, contextCreateFromBinary),
    arguments::kContextCreateFromBinary};
inline constexpr Function kContextFree = {
    "contextFree", offsetof(Table, contextFree), arguments::kContextFree};
inline constexpr Function kGraphCreate = {
    "graphCreate", offsetof(Table, graphCreate), arguments::kGraphCreate};
inline constexpr Function kGraphCreateSubgraph = {
    "graphCreateSubgraph", offsetof(Table, graphCreateSubgraph),
    arguments::kGraphCreateSubgraph};
inline constexpr Function kGraphSetConfig = {"graphSetConfig",
                                             offsetof(Table, graphSetConfig),
                                             arguments::kGraphSetConfig};
inline constexpr Function kGraphAddNode = {
    "graphAddNode", offsetof(Table, graphAddNode), arguments::kGraphAddNode};
inline constexpr Function kGraphFinalize = {
    "graphFinalize", offsetof(Table, graphFinalize), arguments::kGraphFinalize};
inline constexpr Function kGraphRetrieve = {
    "graphRetrieve", offsetof(Table, graphRetrieve), arguments::kGraphRetrieve};
inline constexpr Function kGraphExecute = {
    "graphExecute", offsetof(Table, graphExecute), arguments::kGraphExecute};
inline constexpr Function kTensorCreateContextTensor = {
    "tensorCreateContextTensor", offsetof(Table, tensorCreateContextTensor),
    arguments::kTensorCreateContextTensor};
inline constexpr Function kTensorCreateGraphTensor = {
    "tensorCreateGraphTensor", offsetof(Table, tensorCreateGraphTensor),
    arguments::kTensorCreateGraphTensor};
inline constexpr Function kProfileCreate = {
    "profileCreate", offsetof(Table, profileCreate), arguments::kProfileCreate};
inline constexpr Function kProfileSetConfig = {
    "profileSetConfig", offsetof(Table, profileSetConfig),
    arguments::kProfileSetConfig};
inline constexpr Function kProfileGetEvents = {
    "profileGetEvents", offsetof(Table, profileGetEvents),
    arguments::kProfileGetEvents};
inline constexpr Function kProfileGetSubEvents = {
    "profileGetSubEvents", offsetof(Table, profileGetSubEvents),
    arguments::kProfileGetSubEvents};
inline constexpr Function kProfileGetEventData = {
    "profileGetEventData", offsetof(Table, profileGetEventData),
    arguments::kProfileGetEventData};
inline constexpr Function kProfileGetExtendedEventData = {
    "profileGetExtendedEventData", offsetof(Table, profileGetExtendedEventData),
    arguments::kProfileGetExtendedEventData};
inline constexpr Function kProfileFree = {
    "profileFree", offsetof(Table, profileFree), arguments::kProfileFree};
inline constexpr Function kDeviceGetPlatformInfo = {
    "deviceGetPlatformInfo", offsetof(Table, deviceGetPlatformInfo),
    arguments::kDeviceGetPlatformInfo};
inline constexpr Function kDeviceGetInfrastructure = {
    "deviceGetInfrastructure", offsetof(Table, deviceGetInfrastructure),
    arguments::kDeviceGetInfrastructure};
inline constexpr Function kDeviceCreate = {
    "deviceCreate", offsetof(Table, deviceCreate), arguments::kDeviceCreate};
inline constexpr Function kDeviceSetConfig = {"deviceSetConfig",
                                              offsetof(Table, deviceSetConfig),
                                              arguments::kDeviceSetConfig};
inline constexpr Function kDeviceGetInfo = {
    "deviceGetInfo", offsetof(Table, deviceGetInfo), arguments::kDeviceGetInfo};
inline constexpr Function kDeviceFree = {
    "deviceFree", offsetof(Table, deviceFree), arguments::kDeviceFree};
inline constexpr Function kContextValidateBinary = {
    "contextValidateBinary", offsetof(Table, contextValidateBinary),
    arguments::kContextValidateBinary};
inline constexpr Function kContextCreateFromBinaryWithSignal = {
    "contextCreateFromBinaryWithSignal",
    offsetof(Table, contextCreateFromBinaryWithSignal),
    arguments::kContextCreateFromBinaryWithSignal};

}  // namespace calls

// All of them, in the order of the table's slots.
std::span<const Function* const> recordedFunctions();

// Null when no recorded function has the name.
const Function* findFunction(std::string_view name);

}  // namespace kiv::format
