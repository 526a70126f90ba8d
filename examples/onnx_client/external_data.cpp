#include "external_data.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <optional>
#include <string>

#include "errors.h"

namespace onnx_client {
namespace {

namespace fs = std::filesystem;

class Reader {
 public:
  explicit Reader(fs::path directory) : directory_(std::move(directory)) {}

  void read(onnx::GraphProto& graph) {
    for (onnx::TensorProto& tensor : *graph.mutable_initializer()) read(tensor);
    for (onnx::NodeProto& node : *graph.mutable_node()) {
      for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
        if (attribute.has_t()) read(*attribute.mutable_t());
        for (auto& tensor : *attribute.mutable_tensors()) read(tensor);
        if (attribute.has_g()) read(*attribute.mutable_g());
        for (auto& below : *attribute.mutable_graphs()) read(below);
      }
    }
  }

 private:
  struct Place {
    std::string location;
    std::uint64_t offset = 0;
    // All bytes from there on without.
    std::optional<std::uint64_t> length;
  };

  static std::uint64_t numberOf(const std::string& text,
                                const onnx::TensorProto& tensor) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end)
      throw ClientError("tensor " + tensor.name() + ": " + text +
                        " is no place in a file");
    return number;
  }

  static Place placeOf(const onnx::TensorProto& tensor) {
    Place place;
    for (const auto& entry : tensor.external_data()) {
      if (entry.key() == "location") place.location = entry.value();
      if (entry.key() == "offset")
        place.offset = numberOf(entry.value(), tensor);
      if (entry.key() == "length")
        place.length = numberOf(entry.value(), tensor);
    }
    return place;
  }

  // A network from a stranger must not name files elsewhere.
  static bool isBelow(const fs::path& path) {
    return !path.empty() && path.is_relative() &&
           std::ranges::find(path, fs::path("..")) == path.end();
  }

  std::ifstream& open(const Place& place, const onnx::TensorProto& tensor) {
    const auto [file, isNew] = files_.try_emplace(place.location);
    if (isNew && isBelow(place.location))
      file->second.open(directory_ / place.location, std::ios::binary);
    if (!file->second.is_open())
      throw ClientError("tensor " + tensor.name() + " has its data in " +
                        place.location + ", which cannot be read");
    return file->second;
  }

  void read(onnx::TensorProto& tensor) {
    if (tensor.data_location() != onnx::TensorProto::EXTERNAL) return;
    const Place place = placeOf(tensor);
    std::ifstream& file = open(place, tensor);
    file.clear();
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(file.tellg());
    const std::uint64_t left = size - std::min(size, place.offset);
    const std::uint64_t length = place.length.value_or(left);
    if (length > left)
      throw ClientError("tensor " + tensor.name() + ": " + place.location +
                        " is too short");
    std::string bytes(length, '\0');
    file.seekg(static_cast<std::streamoff>(place.offset));
    file.read(bytes.data(), static_cast<std::streamsize>(length));
    if (!file) throw ClientError(place.location + " cannot be read");
    tensor.set_raw_data(std::move(bytes));
    tensor.clear_external_data();
    tensor.clear_data_location();
  }

  fs::path directory_;
  std::map<std::string, std::ifstream> files_;
};

}  // namespace

void readExternalData(onnx::ModelProto& model, const fs::path& directory) {
  Reader(directory).read(*model.mutable_graph());
}

}  // namespace onnx_client
