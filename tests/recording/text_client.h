#pragma once

#include "KivInterface.h"

namespace kiv::test {

// A session whose texts are made of pieces of recordings: quotes, line ends,
// the ends of statements, whole statements. Names of graphs and tensors differ
// from each other. The same seed makes the same session.
void runTextSession(const KivInterface_Implementation_t& api, unsigned seed);

}  // namespace kiv::test
