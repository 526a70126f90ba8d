#include "shapes.h"

#include <onnx/shape_inference/implementation.h>

#include <algorithm>
#include <charconv>
#include <exception>

#include "errors.h"
#include "run_apart.h"
#include "tensor_data.h"

namespace onnx_client {
namespace {

using Dimension = onnx::TensorShapeProto::Dimension;
using Values = google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>;

// Some exporters write -1 for a size that is not known.
bool isOpen(const Dimension& dimension) {
  return !dimension.has_dim_value() || dimension.dim_value() < 0;
}

std::vector<std::uint8_t> openFlags(const onnx::ValueInfoProto& value) {
  std::vector<std::uint8_t> flags;
  for (const Dimension& dimension : value.type().tensor_type().shape().dim())
    flags.push_back(isOpen(dimension) ? 1 : 0);
  if (std::count(flags.begin(), flags.end(), 1) == 0) flags.clear();
  return flags;
}

void collectOpen(const Values& values, OpenShapes& open) {
  for (const onnx::ValueInfoProto& value : values) {
    std::vector<std::uint8_t> flags = openFlags(value);
    if (!flags.empty()) open.insert_or_assign(value.name(), std::move(flags));
  }
}

// Applies a function to each dimension of the tensors among the values.
template <typename Function>
void forEachDimension(Values& values, Function function) {
  for (onnx::ValueInfoProto& value : values) {
    if (!value.type().tensor_type().has_shape()) continue;
    auto* shape = value.mutable_type()->mutable_tensor_type()->mutable_shape();
    for (Dimension& dimension : *shape->mutable_dim()) function(dimension);
  }
}

// Sizes by the names that stand for them in the file.
using Symbols = std::map<std::string, std::int64_t>;

void close(Dimension& dimension, std::int64_t size, Symbols& symbols) {
  if (dimension.has_dim_param() && !dimension.dim_param().empty())
    symbols.emplace(dimension.dim_param(), size);
  dimension.set_dim_value(size);
}

void giveShape(onnx::ValueInfoProto& input,
               const std::vector<std::uint32_t>& sizes, Symbols& symbols) {
  auto& type = *input.mutable_type()->mutable_tensor_type();
  if (!type.has_shape())
    for (std::size_t i = 0; i < sizes.size(); ++i)
      type.mutable_shape()->add_dim();
  auto& dimensions = *type.mutable_shape()->mutable_dim();
  if (dimensions.size() != static_cast<int>(sizes.size()))
    throw ClientError("--shape gives input " + input.name() + " " +
                      std::to_string(sizes.size()) + " sizes, it has " +
                      std::to_string(dimensions.size()));
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    Dimension& dimension = dimensions[static_cast<int>(i)];
    if (isOpen(dimension)) close(dimension, sizes[i], symbols);
    if (dimension.dim_value() != sizes[i])
      throw ClientError("--shape gives input " + input.name() + " the size " +
                        std::to_string(sizes[i]) + " where the network has " +
                        std::to_string(dimension.dim_value()));
  }
}

void giveShapes(onnx::GraphProto& graph, const GivenShapes& given,
                Symbols& symbols) {
  for (const auto& [name, sizes] : given) {
    Values& inputs = *graph.mutable_input();
    const auto found = std::find_if(
        inputs.begin(), inputs.end(),
        [&wanted = name](const auto& input) { return input.name() == wanted; });
    if (found == inputs.end())
      throw ClientError("--shape: the network has no input " + name);
    giveShape(*found, sizes, symbols);
  }
}

void closeNamed(Values& values, const Symbols& symbols) {
  forEachDimension(values, [&](Dimension& dimension) {
    if (!dimension.has_dim_param()) return;
    const auto found = symbols.find(dimension.dim_param());
    if (found != symbols.end()) dimension.set_dim_value(found->second);
  });
}

void noteOpen(const OpenShapes& open, std::vector<std::string>& notes) {
  for (const auto& [name, flags] : open)
    notes.push_back("sizes of input " + name +
                    " that are open (--shape gives them) are taken as 1");
}

constexpr char kAllInferred = '+';
constexpr char kSomeInferred = '-';

// The model with inferred shapes and without its initializers, as bytes behind
// one of the marks above.
std::string inferredBytes(onnx::ModelProto& model) {
  const onnx::ShapeInferenceOptions options(false, 0, true);
  std::string bytes(1, kAllInferred);
  try {
    onnx::shape_inference::InferShapes(
        model, onnx::OpSchemaRegistry::Instance(), options);
  } catch (const std::exception&) {
    bytes[0] = kSomeInferred;
  }
  model.mutable_graph()->clear_initializer();
  model.AppendToString(&bytes);
  return bytes;
}

// Inference trusts the nodes to be sound, so it runs apart.
bool inferShapes(onnx::ModelProto& model) {
  const auto bytes = runApart([&] { return inferredBytes(model); });
  if (!bytes || bytes->empty()) return false;
  onnx::ModelProto inferred;
  if (!inferred.ParseFromString(bytes->substr(1))) return false;
  onnx::GraphProto& graph = *model.mutable_graph();
  inferred.mutable_graph()->mutable_initializer()->Swap(
      graph.mutable_initializer());
  graph.Swap(inferred.mutable_graph());
  return bytes->front() == kAllInferred;
}

const char* kindName(const onnx::TypeProto& type) {
  switch (type.value_case()) {
    case onnx::TypeProto::kSequenceType:
      return "a sequence";
    case onnx::TypeProto::kMapType:
      return "a map";
    case onnx::TypeProto::kOptionalType:
      return "an optional value";
    case onnx::TypeProto::kSparseTensorType:
      return "a sparse tensor";
    default:
      return "of unknown type";
  }
}

Shape readShape(const onnx::TypeProto::Tensor& type, const std::string& what) {
  Shape shape;
  shape.known = type.has_shape();
  for (const Dimension& dimension : type.shape().dim()) {
    const bool open = isOpen(dimension);
    shape.dynamic.push_back(open ? 1 : 0);
    shape.dimensions.push_back(
        open ? 1 : checkedDimension(dimension.dim_value(), what));
  }
  if (std::count(shape.dynamic.begin(), shape.dynamic.end(), 1) == 0)
    shape.dynamic.clear();
  return shape;
}

}  // namespace

void parseShape(const std::string& text, GivenShapes& shapes) {
  const std::size_t equals = text.rfind('=');
  std::vector<std::uint32_t> sizes;
  const char* at = text.data() + std::min(equals, text.size());
  const char* const end = text.data() + text.size();
  bool isGood = equals != std::string::npos && equals != 0;
  while (isGood && at != end) {
    std::uint32_t size = 0;
    const auto result = std::from_chars(at + 1, end, size);
    isGood =
        result.ec == std::errc{} && (result.ptr == end || *result.ptr == 'x');
    sizes.push_back(size);
    at = result.ptr;
  }
  if (!isGood)
    throw ClientError("--shape: " + text + " is not like x=1x3x48x192");
  shapes[text.substr(0, equals)] = sizes;
}

OpenShapes settleShapes(onnx::ModelProto& model, const GivenShapes& given,
                        std::vector<std::string>& notes) {
  OpenShapes open;
  onnx::GraphProto& graph = *model.mutable_graph();
  Symbols symbols;
  giveShapes(graph, given, symbols);
  closeNamed(*graph.mutable_input(), symbols);
  collectOpen(graph.input(), open);
  noteOpen(open, notes);
  if (given.empty() || !open.empty()) collectOpen(graph.output(), open);
  forEachDimension(*graph.mutable_input(), [&](Dimension& dimension) {
    if (isOpen(dimension)) close(dimension, 1, symbols);
  });
  closeNamed(*graph.mutable_output(), symbols);
  closeNamed(*graph.mutable_value_info(), symbols);
  if (!inferShapes(model))
    notes.emplace_back("not all shapes of the network could be inferred");
  return open;
}

ValueTypes::ValueTypes(const onnx::GraphProto& graph) {
  for (const Values* values :
       {&graph.input(), &graph.output(), &graph.value_info()}) {
    for (const onnx::ValueInfoProto& value : *values)
      if (value.has_type()) types_.try_emplace(value.name(), &value.type());
  }
}

void ValueTypes::describe(const std::string& value, Tensor& tensor) const {
  const std::string what = "tensor " + value;
  const auto found = types_.find(value);
  if (found == types_.end()) throw NotAccepted(what + " is of unknown type");
  const onnx::TypeProto& type = *found->second;
  if (!type.has_tensor_type())
    throw NotAccepted(what + " is " + kindName(type));
  tensor.dataType = dataTypeOf(type.tensor_type().elem_type(), what);
  tensor.shape = readShape(type.tensor_type(), what);
}

}  // namespace onnx_client
