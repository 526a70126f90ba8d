#include "tensors.h"

#include <algorithm>

#include "failure.h"

namespace kiv::ort {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw Failure(KIV_GRAPH_ERROR_INVALID_TENSOR, why);
}

// Both versions begin alike.
template <typename Record>
TensorFields readCommon(const Record& record, const std::string& what) {
  TensorFields fields;
  fields.id = record.id;
  if (record.name != nullptr) fields.name = record.name;
  fields.type = record.type;
  fields.dataType = record.dataType;
  if (record.memType != KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER &&
      record.type != KIV_TENSOR_TYPE_NULL)
    refuse(what + " is in a memory handle; only client buffers are taken");
  if (record.dataFormat != KIV_TENSOR_DATA_FORMAT_DENSE &&
      record.type != KIV_TENSOR_TYPE_NULL) {
    throw Failure(KIV_COMMON_ERROR_NOT_SUPPORTED,
                  what + " is not dense; only dense tensors are taken");
  }
  if (record.rank > 0 && record.dimensions == nullptr)
    refuse(what + " has a rank but no dimensions");
  fields.dimensions.assign(record.dimensions, record.dimensions + record.rank);
  fields.buffer = record.clientBuf;
  return fields;
}

TensorFields readV2(const Kiv_TensorV2_t& record, const std::string& what) {
  TensorFields fields = readCommon(record, what);
  const std::uint8_t* flags = record.isDynamicDimensions;
  if (flags != nullptr && std::count(flags, flags + record.rank, 0) !=
                              static_cast<std::ptrdiff_t>(record.rank))
    fields.open.assign(flags, flags + record.rank);
  return fields;
}

}  // namespace

TensorFields readFields(const Kiv_Tensor_t& record, const std::string& what) {
  switch (record.version) {
    case KIV_TENSOR_VERSION_1:
      return readCommon(record.v1, what);
    case KIV_TENSOR_VERSION_2:
      return readV2(record.v2, what);
    default:
      throw Failure(KIV_COMMON_ERROR_NOT_SUPPORTED,
                    what + " is of version " + std::to_string(record.version) +
                        "; versions 1 and 2 are taken");
  }
}

std::string describe(const TensorFields& fields) {
  if (fields.name.empty()) return "tensor " + std::to_string(fields.id);
  return "tensor \"" + fields.name + "\"";
}

void checkBuffer(const TensorFields& fields, const ElementType& elements) {
  const std::uint64_t wanted =
      byteSize(elements, fields.dimensions, describe(fields));
  const std::uint64_t size =
      fields.buffer.data == nullptr ? 0 : fields.buffer.dataSize;
  if (size != wanted) {
    refuse(describe(fields) + " takes " + std::to_string(wanted) +
           " bytes of data, its buffer has " + std::to_string(size));
  }
}

Tensor makeTensor(const TensorFields& fields) {
  Tensor tensor;
  tensor.id = fields.id;
  tensor.name = fields.name;
  tensor.type = fields.type;
  tensor.elements = &elementType(fields.dataType, describe(fields));
  tensor.dimensions = fields.dimensions;
  tensor.open = fields.open;
  if (fields.type == KIV_TENSOR_TYPE_STATIC)
    checkBuffer(fields, *tensor.elements);
  return tensor;
}

}  // namespace kiv::ort
