#pragma once

#include <functional>

namespace kiv::test {

// Runs `body` in a forked process, which ends with its result, and returns the
// exit code; minus the signal's number if it was killed. A body that hangs is
// killed.
int inChild(const std::function<int()>& body);

// Runs a part of a test in a process of its own, where it passes.
void expectInChild(const std::function<void()>& body);

}  // namespace kiv::test
