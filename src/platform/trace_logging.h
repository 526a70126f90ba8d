#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// The wire form of TraceLogging events, as Windows takes them: the bytes are
// made here, on any system, and handed over in trace_events_windows.cpp.
//
//   provider metadata = size:u16 name NUL
//   event metadata    = size:u16 tag:u8(0) name NUL { field NUL type:u8 }
//
// Sizes include their own two bytes; integers are little-endian, names UTF-8.
// Any thread may call these functions.
namespace kiv::platform::trace_logging {

inline constexpr std::string_view kProviderName = "KIVTraceLoggingProvider";
inline constexpr std::string_view kEventName = "KIV";
inline constexpr std::string_view kFieldName = "TestMessage";

// The type byte of a field that holds an ANSI string with its zero.
inline constexpr std::uint8_t kAnsiString = 2;

inline constexpr std::uint8_t kLevel = 5;
inline constexpr std::uint8_t kChannel = 11;

// The provider's GUID in memory order: the first 16 bytes of SHA-1 over the
// name space 482C2DB2-C390-47C8-87F8-1A15BFC130FB and the name in upper case as
// UTF-16BE, with version 5 in the high half of byte 7.
std::array<std::uint8_t, 16> providerGuid();

std::vector<std::uint8_t> providerMetadata();
std::vector<std::uint8_t> eventMetadata();

}  // namespace kiv::platform::trace_logging
