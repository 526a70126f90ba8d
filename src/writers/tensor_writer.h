#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "KivTypes.h"
#include "format/element_types.h"
#include "writers/call_text.h"

namespace kiv::writers {

// Writes a tensor record as the variable `name`, behind its parts ("_dims",
// "_quantizeParams", "_data", "_clientBuf", "_isDynamicDimensions", "_v1" or
// "_v2"). Data is read from the data file.
//
// `created` knows the variables of the tensors that may be meant: an id found
// there is written as "<variable>.v1.id", so that the program uses the id that
// its backend assigned. Null at creation: the client's number is written.
//
// Fails with the quantization writer's status, 6004 for memory that is not a
// client buffer, 7999 for data of an unknown type, 1000 for an unknown version.
void writeTensor(CallText& call, const Kiv_Tensor_t& tensor,
                 NameOf<Family::kTensor> name,
                 const session::TensorRegistry* created);

// The union's member of a tensor's version, "v1" or "v2"; empty, with a
// message, for any other.
std::string_view tensorVersionMember(CallText& call, std::uint32_t version);

// The C type and the size of a tensor's elements; fails with 7999.
std::optional<format::ElementType> dataTypeToCType(CallText& call,
                                                   std::uint32_t dataType);

}  // namespace kiv::writers
