#include "data_types.h"
#include "records.h"

namespace kiv::tracer {
namespace {

// The size of a buffer without data is left out, since it means nothing. The
// hash of a buffer that ends amid an element covers its whole elements only,
// since a recording holds no more.
void printBuffer(LineWriter& line, const Kiv_ClientBuffer_t& buffer,
                 const Kiv_DataType_t& type) {
  if (buffer.data == nullptr) {
    line.key("data").word("null");
    return;
  }
  const std::uint32_t hashed =
      buffer.dataSize - buffer.dataSize % elementSize(enumValue(type));
  line.field("data", Data{buffer.data, hashed, buffer.dataSize});
}

template <typename TensorV>
void printMemory(LineWriter& line, const TensorV& tensor) {
  line.field("mem", tensor.memType);
  if (enumValue(tensor.memType) == KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER) {
    printBuffer(line, tensor.clientBuf, tensor.dataType);
  } else if (enumValue(tensor.memType) == KIV_TENSOR_MEM_TYPE_MEM_HANDLE) {
    line.key("handle").handle(Kind::kMem, tensor.memHandle);
  }
}

// Prints the fields that both versions have.
template <typename TensorV>
void printCommonFields(LineWriter& line, const TensorV& tensor) {
  line.field("id", tensor.id)
      .field("name", tensor.name)
      .field("type", tensor.type)
      .field("format", tensor.dataFormat)
      .field("dataType", tensor.dataType)
      .field("quantize", tensor.quantizeParams)
      .field("rank", tensor.rank)
      .field("dims", Array{tensor.dimensions, tensor.rank});
  printMemory(line, tensor);
}

}  // namespace

void print(LineWriter& line, const Kiv_SparseParams_t& sparse) {
  line.begin('{')
      .field("type", sparse.type)
      .field("elements", sparse.counts.numElements)
      .field("dimensions", sparse.counts.numDimensions)
      .end('}');
}

void print(LineWriter& line, const Kiv_Tensor_t& tensor) {
  line.begin('{').field("version", tensor.version);
  if (enumValue(tensor.version) == KIV_TENSOR_VERSION_1) {
    printCommonFields(line, tensor.v1);
  } else if (enumValue(tensor.version) == KIV_TENSOR_VERSION_2) {
    printCommonFields(line, tensor.v2);
    line.field("dynamic", Array{tensor.v2.isDynamicDimensions, tensor.v2.rank})
        .field("sparse", tensor.v2.sparseParams)
        .field("produced", tensor.v2.isProduced);
  }
  line.end('}');
}

}  // namespace kiv::tracer
