#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "library/started_session.h"

namespace kiv::test {

using Lines = std::vector<std::string>;

// How a whole model file ends.
inline constexpr const char* kFooterEnd = "0 : error;\n}\n";

// The calls of a session, as Tracer prints them.
Lines callsOf(const std::function<void(const Api&)>& session);

// The calls of a recording: compiled, completed first if it has no end, and
// replayed on Tracer. A failure fails the test.
Lines replayedCalls(const std::filesystem::path& recording);

// How Tracer prints data.
std::string dataText(const std::string& bytes);

// How often `part` occurs.
std::size_t countOf(const std::string& text, const std::string& part);

// The bytes that the read statements of a model file ask for.
std::size_t bytesRead(const std::string& modelText);

}  // namespace kiv::test
