#pragma once

#include "diagnostics/failure.h"

namespace kiv::api {

// The ways in which entry functions fail by themselves. The same condition has
// different codes in different entries: clients know them so.

inline constexpr Failure kBackendOutIsNull = {
    Status::kBackendInvalidArgument, "Provided backend handle pointer is NULL"};

inline constexpr Failure kContextOutIsNull = {
    Status::kContextInvalidArgument, "Provided context handle pointer is NULL"};
inline constexpr Failure kContextNotCreated = {
    Status::kOutOfMemory, "Could not create a new context"};
inline constexpr Failure kContextIsNull5002 = {
    Status::kContextUnknown, "Provided context handle is NULL"};
inline constexpr Failure kContextIsNull6001 = {
    Status::kGraphUnknown, "Provided context handle is NULL"};
inline constexpr Failure kContextIsUnknown5002 = {
    Status::kContextUnknown, "No context associated with the provided handle"};
inline constexpr Failure kContextIsUnknown6001 = {
    Status::kGraphUnknown, "No context associated with the provided handle"};
// The messages of the free calls end with a full stop.
inline constexpr Failure kFreedContextIsUnknown = {
    Status::kContextUnknown, "No context associated with the provided handle."};
inline constexpr Failure kContextNotFreed = {
    Status::kOutOfMemory, "Could not deallocate the context."};

inline constexpr Failure kGraphNameOrOutIsNull = {
    Status::kGraphInvalidArgument,
    "Provided graph handle or graph name is NULL"};
inline constexpr Failure kSubgraphNameOrOutIsNull = {
    Status::kGraphInvalidArgument,
    "Provided subgraph handle or subgraph name is NULL"};
inline constexpr Failure kGraphIsNull = {Status::kGraphUnknown,
                                         "Provided graph handle is NULL"};
inline constexpr Failure kGraphIsUnknown = {
    Status::kGraphUnknown, "No graph associated with the provided handle"};

inline constexpr Failure kTensorIsNull = {Status::kTensorInvalidArgument,
                                          "Provided tensor ptr is NULL"};
inline constexpr Failure kContextTensorNotCreated = {
    Status::kOutOfMemory, "Could not create a new context tensor"};
inline constexpr Failure kGraphTensorNotCreated = {
    Status::kOutOfMemory, "Could not create a new graph tensor"};

inline constexpr Failure kProfileOutIsNull = {
    Status::kInvalidArgument, "Provided profile handle pointer is NULL"};
inline constexpr Failure kProfileNotCreated = {
    Status::kOutOfMemory, "Could not create a new profile"};
inline constexpr Failure kProfileIsNull = {Status::kProfileUnknown,
                                           "Provided profile handle is NULL"};
inline constexpr Failure kProfileIsUnknown = {
    Status::kProfileUnknown, "No profile associated with the provided handle"};
inline constexpr Failure kFreedProfileIsUnknown = {
    Status::kProfileUnknown, "No profile associated with the provided handle."};
inline constexpr Failure kProfileNotFreed = {
    Status::kOutOfMemory, "Could not deallocate the profile."};

inline constexpr Failure kDeviceOutIsNull = {
    Status::kInvalidArgument, "Provided device handle pointer is NULL"};
inline constexpr Failure kDeviceNotCreated = {Status::kOutOfMemory,
                                              "Could not create a new device"};
inline constexpr Failure kDeviceIsNull = {Status::kDeviceUnknown,
                                          "Provided device handle is NULL"};
inline constexpr Failure kDeviceIsUnknown = {
    Status::kDeviceUnknown, "No device associated with the provided handle"};

}  // namespace kiv::api
