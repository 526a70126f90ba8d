#include "external_data.h"

#include <charconv>
#include <string_view>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::size_t kDigits = 20;

std::string padded(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  return std::string(kDigits - digits.size(), '0') + digits;
}

std::uint64_t parse(std::string_view text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || at != end)
    throw Failure(KIV_CONTEXT_ERROR_BINARY, "a tensor has no place");
  return number;
}

void addEntry(onnx::TensorProto& tensor, const char* key,
              const std::string& value) {
  onnx::StringStringEntryProto& entry = *tensor.add_external_data();
  entry.set_key(key);
  entry.set_value(value);
}

}  // namespace

void forEachTensor(
    onnx::GraphProto& graph,
    const std::function<void(onnx::TensorProto&, bool)>& function) {
  for (onnx::TensorProto& tensor : *graph.mutable_initializer())
    function(tensor, true);
  for (onnx::SparseTensorProto& sparse : *graph.mutable_sparse_initializer()) {
    function(*sparse.mutable_values(), false);
    function(*sparse.mutable_indices(), false);
  }
  for (onnx::NodeProto& node : *graph.mutable_node()) {
    for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
      if (attribute.has_t()) function(*attribute.mutable_t(), false);
      if (attribute.has_sparse_tensor()) {
        function(*attribute.mutable_sparse_tensor()->mutable_values(), false);
        function(*attribute.mutable_sparse_tensor()->mutable_indices(), false);
      }
      for (onnx::TensorProto& tensor : *attribute.mutable_tensors())
        function(tensor, false);
      if (attribute.has_g()) forEachTensor(*attribute.mutable_g(), function);
      for (onnx::GraphProto& below : *attribute.mutable_graphs())
        forEachTensor(below, function);
    }
  }
}

bool isExternal(const onnx::TensorProto& tensor) {
  return tensor.data_location() == onnx::TensorProto::EXTERNAL ||
         tensor.external_data_size() > 0;
}

bool isInDataFile(const onnx::TensorProto& tensor) {
  if (tensor.data_location() != onnx::TensorProto::EXTERNAL) return false;
  bool isThere = false;
  for (const onnx::StringStringEntryProto& entry : tensor.external_data()) {
    if (entry.key() != "location") continue;
    if (entry.value() != DataFile::kName) return false;
    isThere = true;
  }
  return isThere;
}

DataPlace placeOf(const onnx::TensorProto& tensor) {
  DataPlace place;
  for (const onnx::StringStringEntryProto& entry : tensor.external_data()) {
    if (entry.key() == "offset") place.offset = parse(entry.value());
    if (entry.key() == "length") place.size = parse(entry.value());
  }
  return place;
}

void setPlace(onnx::TensorProto& tensor, const DataPlace& place) {
  tensor.clear_raw_data();
  tensor.clear_external_data();
  tensor.set_data_location(onnx::TensorProto::EXTERNAL);
  addEntry(tensor, "location", DataFile::kName);
  addEntry(tensor, "offset", padded(place.offset));
  addEntry(tensor, "length", padded(place.size));
}

void takeIn(onnx::GraphProto& graph, const DataFile& file) {
  forEachTensor(graph, [&](onnx::TensorProto& tensor, bool) {
    if (!isExternal(tensor)) return;
    const DataPlace place = placeOf(tensor);
    std::string bytes(place.size, '\0');
    file.read(place, bytes.data());
    tensor.clear_external_data();
    tensor.clear_data_location();
    tensor.set_raw_data(std::move(bytes));
  });
}

}  // namespace kiv::ort
