#include "context_binary.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::string_view kMagic = "KIVORT01";
constexpr std::size_t kAlignment = 64;
constexpr const char* kBinaryLocation = "binary";

[[noreturn]] void refuse(const std::string& why) {
  throw Failure(KIV_CONTEXT_ERROR_BINARY, "the binary " + why);
}

// Calls a function with each tensor of a graph and of the graphs below; the
// function also learns whether the tensor is an initializer.
template <typename Function>
void forEachTensor(onnx::GraphProto& graph, const Function& function) {
  for (onnx::TensorProto& tensor : *graph.mutable_initializer())
    function(tensor, true);
  for (onnx::SparseTensorProto& sparse : *graph.mutable_sparse_initializer()) {
    function(*sparse.mutable_values(), false);
    function(*sparse.mutable_indices(), false);
  }
  for (onnx::NodeProto& node : *graph.mutable_node()) {
    for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
      if (attribute.has_t()) function(*attribute.mutable_t(), false);
      for (onnx::TensorProto& tensor : *attribute.mutable_tensors())
        function(tensor, false);
      if (attribute.has_g()) forEachTensor(*attribute.mutable_g(), function);
      for (onnx::GraphProto& below : *attribute.mutable_graphs())
        forEachTensor(below, function);
    }
  }
}

std::uint64_t parse(std::string_view text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || at != end) refuse("has a damaged tensor");
  return number;
}

struct Place {
  std::string location;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

Place placeOf(const onnx::TensorProto& tensor) {
  Place place;
  for (const onnx::StringStringEntryProto& entry : tensor.external_data()) {
    if (entry.key() == "location") place.location = entry.value();
    if (entry.key() == "offset") place.offset = parse(entry.value());
    if (entry.key() == "length") place.length = parse(entry.value());
  }
  return place;
}

bool isExternal(const onnx::TensorProto& tensor) {
  return tensor.data_location() == onnx::TensorProto::EXTERNAL ||
         tensor.external_data_size() > 0;
}

void setEntry(onnx::TensorProto& tensor, const char* key,
              const std::string& value) {
  for (onnx::StringStringEntryProto& entry : *tensor.mutable_external_data())
    if (entry.key() == key) entry.set_value(value);
}

class Writer {
 public:
  explicit Writer(std::span<const onnx::ModelProto* const> models) {
    for (const onnx::ModelProto* model : models) models_.push_back(*model);
  }

  Bytes write() {
    // Offsets are written with as many digits as the largest, so that the
    // models' sizes are known before the offsets are.
    placeData(0);
    std::uint64_t start = kMagic.size() + sizeof(std::uint64_t);
    for (const onnx::ModelProto& model : models_)
      start += sizeof(std::uint64_t) + model.ByteSizeLong();
    placeData(start);
    return join();
  }

 private:
  struct Piece {
    const void* data;
    std::uint64_t offset;
    std::uint64_t size;
  };

  static std::string padded(std::uint64_t number) {
    std::string digits = std::to_string(number);
    return std::string(20 - digits.size(), '0') + digits;
  }

  void placeData(std::uint64_t start);
  Bytes join() const;

  std::vector<onnx::ModelProto> models_;
  std::vector<Piece> pieces_;
  std::uint64_t size_ = 0;
};

void Writer::placeData(std::uint64_t start) {
  const bool isFirst = pieces_.empty();
  std::size_t index = 0;
  size_ = start;
  for (onnx::ModelProto& model : models_) {
    forEachTensor(*model.mutable_graph(), [&](onnx::TensorProto& tensor, bool) {
      if (!isExternal(tensor)) return;
      if (isFirst) {
        const Place place = placeOf(tensor);
        pieces_.push_back(
            {reinterpret_cast<const void*>(place.offset), 0, place.length});
        setEntry(tensor, "location", kBinaryLocation);
      }
      size_ = (size_ + kAlignment - 1) / kAlignment * kAlignment;
      Piece& piece = pieces_[index++];
      piece.offset = size_;
      setEntry(tensor, "offset", padded(piece.offset));
      size_ += piece.size;
    });
  }
}

Bytes Writer::join() const {
  Bytes bytes;
  bytes.reserve(size_);
  const auto append = [&](const void* data, std::size_t size) {
    const auto* from = static_cast<const std::uint8_t*>(data);
    bytes.insert(bytes.end(), from, from + size);
  };
  const auto appendNumber = [&](std::uint64_t number) {
    append(&number, sizeof number);
  };
  append(kMagic.data(), kMagic.size());
  appendNumber(models_.size());
  for (const onnx::ModelProto& model : models_) {
    const std::string text = model.SerializeAsString();
    appendNumber(text.size());
    append(text.data(), text.size());
  }
  for (const Piece& piece : pieces_) {
    bytes.resize(piece.offset);
    append(piece.data, piece.size);
  }
  return bytes;
}

class Reader {
 public:
  Reader(std::span<const std::uint8_t> binary,
         const std::shared_ptr<const void>& owner, DataPlace place)
      : binary_(binary), owner_(owner), place_(place) {}

  std::vector<Model> read() {
    if (binary_.size() < kMagic.size() ||
        std::memcmp(binary_.data(), kMagic.data(), kMagic.size()) != 0)
      refuse("was not written by this library");
    at_ = kMagic.size();
    const std::uint64_t count = number();
    std::vector<Model> models;
    for (std::uint64_t i = 0; i < count; ++i) models.push_back(model());
    return models;
  }

 private:
  std::span<const std::uint8_t> take(std::uint64_t size) {
    if (size > binary_.size() - at_) refuse("is cut");
    const auto bytes = binary_.subspan(at_, size);
    at_ += size;
    return bytes;
  }

  std::uint64_t number() {
    std::uint64_t number = 0;
    std::memcpy(&number, take(sizeof number).data(), sizeof number);
    return number;
  }

  Model model();
  void settle(onnx::TensorProto& tensor, bool isInitializer) const;

  std::span<const std::uint8_t> binary_;
  const std::shared_ptr<const void>& owner_;
  const DataPlace place_;
  std::uint64_t at_ = 0;
};

Model Reader::model() {
  const auto bytes = take(number());
  Model model;
  if (bytes.size() >
          static_cast<std::size_t>(std::numeric_limits<int>::max()) ||
      !model.proto.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
    refuse("holds something that is no model");
  if (model.proto.functions_size() > 0)
    refuse("holds functions, which this library does not write");
  forEachTensor(*model.proto.mutable_graph(),
                [&](onnx::TensorProto& tensor, bool isInitializer) {
                  settle(tensor, isInitializer);
                });
  model.data.push_back(owner_);
  return model;
}

// Replaces a place in the binary by its address.
void Reader::settle(onnx::TensorProto& tensor, bool isInitializer) const {
  if (!isExternal(tensor)) return;
  const Place place = placeOf(tensor);
  const ElementType* type = findOnnxType(tensor.data_type());
  if (!isInitializer || place.location != kBinaryLocation || type == nullptr)
    refuse("names data that lies elsewhere");
  for (const std::int64_t size : tensor.dims())
    if (size < 0) refuse("has a tensor of a negative size");
  const std::vector<std::int64_t> dimensions(tensor.dims().begin(),
                                             tensor.dims().end());
  if (byteSize(*type, dimensions, "a tensor") != place.length ||
      place.offset > binary_.size() ||
      place.length > binary_.size() - place.offset)
    refuse("has a tensor whose data is not there");
  const std::uint8_t* data = binary_.data() + place.offset;
  if (place_ == DataPlace::kInMemory)
    return setAddress(tensor, data, place.length);
  tensor.clear_external_data();
  tensor.clear_data_location();
  tensor.set_raw_data(data, place.length);
}

}  // namespace

Bytes writeBinary(std::span<const onnx::ModelProto* const> models) {
  return Writer(models).write();
}

std::vector<Model> readBinary(std::span<const std::uint8_t> binary,
                              const std::shared_ptr<const void>& owner,
                              DataPlace place) {
  return Reader(binary, owner, place).read();
}

}  // namespace kiv::ort
