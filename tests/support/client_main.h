#pragma once

#include <functional>
#include <string>

#include "KivInterface.h"

namespace kiv::test {

// What a client does with a library and its argument; true if that went well.
using ClientBody = std::function<bool(const KivInterface_Implementation_t& api,
                                      const std::string& argument)>;

// The main of a client that runs on whichever library it is given:
//
//   CLIENT --backend LIBRARY [--output-dir DIRECTORY] ARGUMENT
//
// as the ONNX client does, so that the same scripts compare it. A recorder
// records for the GPU backend.
int clientMain(int argc, char** argv, const ClientBody& body);

}  // namespace kiv::test
