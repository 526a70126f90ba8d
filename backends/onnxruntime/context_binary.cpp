#include "context_binary.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "external_data.h"
#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::string_view kMagic = "KIVORT01";
constexpr std::size_t kPieceAlignment = 64;
constexpr auto kMostBytes =
    static_cast<std::size_t>(std::numeric_limits<int>::max());

[[noreturn]] void refuseBinary(const std::string& why) {
  throw Failure(KIV_CONTEXT_ERROR_BINARY, "the binary " + why);
}

class Writer {
 public:
  explicit Writer(std::span<const Model* const> models);

  Bytes write();

 private:
  // A tensor's data: where it is, and where it goes.
  struct Piece {
    const DataFile* file;
    DataPlace from;
    std::uint64_t offset;
  };

  void placeData();
  void append(const void* data, std::size_t size);
  void appendNumber(std::uint64_t number) { append(&number, sizeof number); }

  std::vector<onnx::ModelProto> models_;
  std::vector<Piece> pieces_;
  Bytes bytes_;
};

Writer::Writer(std::span<const Model* const> models) {
  for (const Model* model : models) {
    models_.push_back(model->proto);
    forEachTensor(
        *models_.back().mutable_graph(), [&](onnx::TensorProto& tensor, bool) {
          if (isExternal(tensor))
            pieces_.push_back({model->dataFile.get(), placeOf(tensor), 0});
        });
  }
}

Bytes Writer::write() {
  placeData();
  append(kMagic.data(), kMagic.size());
  appendNumber(models_.size());
  for (const onnx::ModelProto& model : models_) {
    const std::string text = model.SerializeAsString();
    appendNumber(text.size());
    append(text.data(), text.size());
  }
  for (const Piece& piece : pieces_) {
    bytes_.resize(piece.offset + piece.from.size);
    piece.file->read(piece.from, bytes_.data() + piece.offset);
  }
  return std::move(bytes_);
}

// Models keep their sizes whatever the offsets in them.
void Writer::placeData() {
  std::uint64_t end = kMagic.size() + sizeof(std::uint64_t);
  for (const onnx::ModelProto& model : models_) {
    if (model.ByteSizeLong() > kMostBytes)
      refuseBinary("would hold a model of more than 2 GiB");
    end += sizeof(std::uint64_t) + model.ByteSizeLong();
  }
  std::size_t index = 0;
  for (onnx::ModelProto& model : models_) {
    forEachTensor(*model.mutable_graph(), [&](onnx::TensorProto& tensor, bool) {
      if (!isExternal(tensor)) return;
      Piece& piece = pieces_[index++];
      piece.offset =
          (end + kPieceAlignment - 1) / kPieceAlignment * kPieceAlignment;
      setPlace(tensor, {piece.offset, piece.from.size});
      end = piece.offset + piece.from.size;
    });
  }
  bytes_.reserve(end);
}

void Writer::append(const void* data, std::size_t size) {
  const auto* from = static_cast<const std::uint8_t*>(data);
  bytes_.insert(bytes_.end(), from, from + size);
}

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> binary) : binary_(binary) {}

  std::vector<Model> read();

 private:
  std::span<const std::uint8_t> take(std::uint64_t size);
  std::uint64_t number();
  Model model();
  void check(const onnx::TensorProto& tensor, bool isInitializer) const;

  std::span<const std::uint8_t> binary_;
  std::uint64_t at_ = 0;
};

std::vector<Model> Reader::read() {
  const std::span<const std::uint8_t> magic =
      take(std::min<std::uint64_t>(kMagic.size(), binary_.size()));
  if (!std::equal(magic.begin(), magic.end(), kMagic.begin(), kMagic.end()))
    refuseBinary("was not written by this library");
  const std::uint64_t count = number();
  std::vector<Model> models;
  for (std::uint64_t i = 0; i < count; ++i) models.push_back(model());
  const auto file = std::make_shared<DataFile>();
  file->append(std::as_bytes(binary_));
  for (Model& model : models) model.dataFile = file;
  return models;
}

std::span<const std::uint8_t> Reader::take(std::uint64_t size) {
  if (size > binary_.size() - at_) refuseBinary("is cut");
  const auto bytes = binary_.subspan(at_, size);
  at_ += size;
  return bytes;
}

std::uint64_t Reader::number() {
  std::uint64_t number = 0;
  std::memcpy(&number, take(sizeof number).data(), sizeof number);
  return number;
}

Model Reader::model() {
  const auto bytes = take(number());
  Model model;
  if (bytes.size() > kMostBytes ||
      !model.proto.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
    refuseBinary("holds something that is no model");
  if (model.proto.functions_size() > 0)
    refuseBinary("holds functions, which this library does not write");
  forEachTensor(*model.proto.mutable_graph(),
                [&](const onnx::TensorProto& tensor, bool isInitializer) {
                  check(tensor, isInitializer);
                });
  return model;
}

void Reader::check(const onnx::TensorProto& tensor, bool isInitializer) const {
  if (!isExternal(tensor)) return;
  if (!isInitializer || !isInDataFile(tensor) ||
      onnx_model::sizeOfElement(tensor.data_type()) == 0)
    refuseBinary("names data that lies elsewhere");
  const std::vector<std::int64_t> dimensions(tensor.dims().begin(),
                                             tensor.dims().end());
  if (std::any_of(dimensions.begin(), dimensions.end(),
                  [](std::int64_t size) { return size < 0; }))
    refuseBinary("has a tensor of a negative size");
  const DataPlace place = placeOf(tensor);
  if (onnx_model::sizeOfData(tensor.data_type(), dimensions) != place.size ||
      place.offset > binary_.size() ||
      place.size > binary_.size() - place.offset)
    refuseBinary("has a tensor whose data is not there");
}

}  // namespace

Bytes writeBinary(std::span<const Model* const> models) {
  return Writer(models).write();
}

std::vector<Model> readBinary(std::span<const std::uint8_t> binary) {
  return Reader(binary).read();
}

}  // namespace kiv::ort
