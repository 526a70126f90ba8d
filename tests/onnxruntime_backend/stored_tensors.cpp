#include "stored_tensors.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace kiv::test {
namespace {

using onnx::TensorProto;
using Numbers = std::vector<double>;

constexpr double kTolerance = 1e-3;

double fromHalf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const double fraction = bits & 1023;
  const double sign = (bits & 0x8000) != 0 ? -1 : 1;
  if (exponent == 31) return fraction == 0 ? sign * INFINITY : NAN;
  if (exponent == 0) return sign * std::ldexp(fraction, -24);
  return sign * std::ldexp(fraction + 1024, exponent - 25);
}

template <typename Element>
Numbers convert(const std::string& bytes) {
  Numbers numbers;
  for (std::size_t at = 0; at + sizeof(Element) <= bytes.size();
       at += sizeof(Element)) {
    Element element;
    std::memcpy(&element, bytes.data() + at, sizeof element);
    numbers.push_back(static_cast<double>(element));
  }
  return numbers;
}

Numbers halves(Numbers bits) {
  for (double& number : bits)
    number = fromHalf(static_cast<std::uint16_t>(number));
  return bits;
}

template <typename List>
Numbers listed(const List& list) {
  return {list.begin(), list.end()};
}

// The elements of data that is in the field for its type.
Numbers listedNumbers(const TensorProto& tensor) {
  switch (tensor.data_type()) {
    case TensorProto::FLOAT:
      return listed(tensor.float_data());
    case TensorProto::DOUBLE:
      return listed(tensor.double_data());
    case TensorProto::INT64:
      return listed(tensor.int64_data());
    case TensorProto::UINT32:
    case TensorProto::UINT64:
      return listed(tensor.uint64_data());
    case TensorProto::FLOAT16:
      return halves(listed(tensor.int32_data()));
    default:
      return listed(tensor.int32_data());
  }
}

Numbers numbersOf(const TensorProto& tensor) {
  return tensor.raw_data().empty()
             ? listedNumbers(tensor)
             : test::numbersOf(tensor.data_type(), tensor.raw_data());
}

bool isClose(double actual, double expected) {
  if (std::isnan(actual) || std::isnan(expected))
    return std::isnan(actual) && std::isnan(expected);
  if (actual == expected) return true;
  return std::abs(actual - expected) <=
         kTolerance + kTolerance * std::abs(expected);
}

}  // namespace

std::vector<double> numbersOf(int onnxType, const std::string& bytes) {
  switch (onnxType) {
    case TensorProto::FLOAT:
      return convert<float>(bytes);
    case TensorProto::DOUBLE:
      return convert<double>(bytes);
    case TensorProto::FLOAT16:
      return halves(convert<std::uint16_t>(bytes));
    case TensorProto::INT8:
      return convert<std::int8_t>(bytes);
    case TensorProto::INT16:
      return convert<std::int16_t>(bytes);
    case TensorProto::INT32:
      return convert<std::int32_t>(bytes);
    case TensorProto::INT64:
      return convert<std::int64_t>(bytes);
    case TensorProto::UINT16:
      return convert<std::uint16_t>(bytes);
    case TensorProto::UINT32:
      return convert<std::uint32_t>(bytes);
    case TensorProto::UINT64:
      return convert<std::uint64_t>(bytes);
    default:
      return convert<std::uint8_t>(bytes);
  }
}

std::vector<TensorProto> readStored(const std::string& directory,
                                    const std::string& name) {
  std::vector<TensorProto> tensors;
  for (;;) {
    std::ifstream file(directory + "/" + name + "_" +
                       std::to_string(tensors.size()) + ".pb");
    TensorProto tensor;
    if (!file || !tensor.ParseFromIstream(&file)) return tensors;
    tensors.push_back(tensor);
  }
}

// Stored tensors have the names of the network's outputs or none.
const TensorProto* findStored(const std::vector<TensorProto>& tensors,
                              const std::string& name, std::size_t index) {
  for (const TensorProto& tensor : tensors)
    if (!tensor.name().empty() && tensor.name() == name) return &tensor;
  if (index < tensors.size()) return &tensors[index];
  return nullptr;
}

bool isEqual(const Output& output, const TensorProto& stored, double& largest) {
  const Numbers& actual = output.numbers;
  const Numbers expected = numbersOf(stored);
  std::string why;
  if (actual.size() != expected.size()) {
    why = std::to_string(actual.size()) + " elements for " +
          std::to_string(expected.size());
  }
  for (std::size_t i = 0; why.empty() && i < actual.size(); ++i) {
    if (!isClose(actual[i], expected[i])) {
      why = "element " + std::to_string(i) + " is " +
            std::to_string(actual[i]) + " for " + std::to_string(expected[i]);
    } else if (std::isfinite(expected[i])) {
      largest = std::max(largest, std::abs(actual[i] - expected[i]));
    }
  }
  if (!why.empty())
    std::fprintf(stderr, "output %s differs: %s\n", output.name.c_str(),
                 why.c_str());
  return why.empty();
}

}  // namespace kiv::test
