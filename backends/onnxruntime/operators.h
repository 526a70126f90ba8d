#pragma once

// Operators that the library knows, for clients that ask before they build:
//
//   for (const OperatorName& name : knownOperators()) ...
//   validateOperation(opsets, config);
//
// Any thread may call the functions.

#include <string>
#include <vector>

#include "KivTypes.h"
#include "onnx_model/opsets.h"

namespace kiv::ort {

struct OperatorName {
  std::string package;
  std::string type;
};

// The operators that libonnx knows but for those of training, in order.
std::vector<OperatorName> knownOperators();

// A Failure if an operation is not one that a node could be made of: its record
// is not valid, its operator is unknown or takes other numbers of inputs and
// outputs.
void validateOperation(const onnx_model::Opsets& opsets,
                       const Kiv_OpConfig_t& config);

}  // namespace kiv::ort
