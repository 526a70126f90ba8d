#pragma once

#include <span>
#include <string>

#include "KivTypes.h"
#include "output/code_stream.h"
#include "session/tensor_registry.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// Writes a tensor record as the variable `name`, behind what it points to
// (name + "_dims", "_quantizeParams", "_data", "_clientBuf",
// "_isDynamicDimensions", "_v1" or "_v2"). Data is read from the data file.
//
// `created` tells the variables of the tensors that may be meant: an id found
// there is written as "<variable>.v1.id", so that the program uses the id that
// its backend assigned. Null at creation: the client's number is written.
//
// Returns the quantization writer's status, 6004 for memory that is not a
// client buffer, 7999 for data of an unknown type, 1000 for an unknown version.
Status writeTensor(WriteScope& scope, const Kiv_Tensor_t& tensor,
                   const std::string& name,
                   const session::TensorRegistry* created);

// Writes each tensor of an array as prefix + its index, and appends the
// variables to `names`. Ends with the first failure.
Status writeTensors(WriteScope& scope, std::span<const Kiv_Tensor_t> tensors,
                    const std::string& prefix,
                    const session::TensorRegistry* created,
                    output::Texts& names);

}  // namespace kiv::writers
