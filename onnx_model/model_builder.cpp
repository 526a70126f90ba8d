#include "onnx_model/model_builder.h"

#include <onnx/defs/schema.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "onnx_model/attributes.h"

namespace kiv::onnx_model {
namespace {

constexpr std::string_view kOpset = "onnx.opset";
// The first version in which initialisers need not be inputs, and newer than
// every operator that the library knows needs.
constexpr std::int64_t kIrVersion = 8;

std::string plainDomain(const std::string& domain) {
  return domain == "ai.onnx" ? std::string() : domain;
}

std::string nameOrId(const char* name, std::uint32_t id) {
  if (name != nullptr && *name != '\0') return name;
  return "tensor_" + std::to_string(id);
}

// The fields that both versions have lie at the same places.
const Kiv_TensorV1_t& plain(const Kiv_Tensor_t& tensor) { return tensor.v1; }

bool isOpen(const Kiv_Tensor_t& tensor, std::uint32_t dimension) {
  return tensor.version == KIV_TENSOR_VERSION_2 &&
         tensor.v2.isDynamicDimensions != nullptr &&
         tensor.v2.isDynamicDimensions[dimension] != 0;
}

Fault faultOf(const Kiv_Tensor_t& tensor, Kiv_ErrorHandle_t status,
              std::string_view why) {
  return {status, "tensor " + nameOrId(plain(tensor).name, plain(tensor).id) +
                      " " + std::string(why)};
}

std::optional<Fault> check(const Kiv_Tensor_t& tensor) {
  if (tensor.version != KIV_TENSOR_VERSION_1 &&
      tensor.version != KIV_TENSOR_VERSION_2)
    return Fault{KIV_COMMON_ERROR_NOT_SUPPORTED,
                 "the version of a tensor's record is unknown"};
  if (plain(tensor).memType == KIV_TENSOR_MEM_TYPE_MEM_HANDLE)
    return faultOf(tensor, KIV_GRAPH_ERROR_INVALID_TENSOR,
                   "is in a memory handle");
  if (!onnxTypeOf(plain(tensor).dataType))
    return faultOf(tensor, KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
                   "has an element type that ONNX does not have");
  return std::nullopt;
}

void describe(const Kiv_Tensor_t& tensor, onnx::TensorProto& proto) {
  const Kiv_TensorV1_t& record = plain(tensor);
  proto.set_data_type(*onnxTypeOf(record.dataType));
  for (std::uint32_t i = 0; i < record.rank && record.dimensions != nullptr;
       ++i)
    proto.add_dims(record.dimensions[i]);
}

std::span<const std::byte> bytesOf(const Kiv_TensorV1_t& record) {
  if (record.clientBuf.data == nullptr) return {};
  return {static_cast<const std::byte*>(record.clientBuf.data),
          record.clientBuf.dataSize};
}

void describe(const Kiv_Tensor_t& tensor, onnx::ValueInfoProto& info) {
  const Kiv_TensorV1_t& record = plain(tensor);
  auto& type = *info.mutable_type()->mutable_tensor_type();
  type.set_elem_type(*onnxTypeOf(record.dataType));
  auto& shape = *type.mutable_shape();
  for (std::uint32_t i = 0; i < record.rank && record.dimensions != nullptr;
       ++i) {
    auto& dimension = *shape.add_dim();
    if (!isOpen(tensor, i)) dimension.set_dim_value(record.dimensions[i]);
  }
}

// bytes; nothing beyond 64 bits
std::optional<std::uint64_t> sizeOf(const onnx::TensorProto& proto) {
  std::uint64_t size = sizeOfElement(proto.data_type());
  for (const std::int64_t dimension : proto.dims())
    if (dimension == 0) return 0;
  for (const std::int64_t dimension : proto.dims()) {
    const auto factor = static_cast<std::uint64_t>(dimension);
    if (size > std::numeric_limits<std::uint64_t>::max() / factor)
      return std::nullopt;
    size *= factor;
  }
  return size;
}

std::optional<Fault> checkSize(const Kiv_Tensor_t& tensor,
                               const onnx::TensorProto& proto) {
  const auto wanted = sizeOf(proto);
  const std::size_t size = bytesOf(plain(tensor)).size();
  if (wanted == size) return std::nullopt;
  return faultOf(tensor, KIV_GRAPH_ERROR_INVALID_TENSOR,
                 "has " + std::to_string(size) +
                     " bytes of data, which are not as many as its dimensions "
                     "say");
}

bool isInput(Kiv_TensorType_t type) {
  return type == KIV_TENSOR_TYPE_INPUT || type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

bool isOutput(Kiv_TensorType_t type) {
  return type == KIV_TENSOR_TYPE_OUTPUT || type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

}  // namespace

void storeInline(std::span<const std::byte> data, onnx::TensorProto& proto) {
  proto.set_raw_data(data.data(), data.size());
}

std::optional<Fault> tensorProtoOf(const Kiv_Tensor_t& tensor,
                                   std::string_view name,
                                   onnx::TensorProto& proto,
                                   const DataSink& sink) {
  if (auto fault = check(tensor)) return fault;
  describe(tensor, proto);
  if (!name.empty()) proto.set_name(std::string(name));
  if (auto fault = checkSize(tensor, proto)) return fault;
  sink(bytesOf(plain(tensor)), proto);
  return std::nullopt;
}

// ---- versions of operators ----

bool ModelBuilder::setPlatformOption(std::string_view option) {
  if (!option.starts_with(kOpset)) return false;
  option.remove_prefix(kOpset.size());
  const std::size_t colon = option.rfind(':');
  if (colon == std::string_view::npos) return false;
  std::string_view domain = option.substr(0, colon);
  const std::string_view digits = option.substr(colon + 1);
  std::int64_t version = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), version);
  if (error != std::errc{} || end != digits.data() + digits.size() ||
      version < 1)
    return false;
  if (!domain.empty() && !domain.starts_with('.')) return false;
  if (!domain.empty()) domain.remove_prefix(1);
  setOpset(std::string(domain), version);
  return true;
}

void ModelBuilder::setOpset(const std::string& domain, std::int64_t version) {
  opsets_[plainDomain(domain)] = version;
}

std::int64_t ModelBuilder::versionOf(const std::string& domain) {
  const auto found = opsets_.find(domain);
  if (found != opsets_.end()) return found->second;
  const auto& known =
      onnx::OpSchemaRegistry::DomainToVersionRange::Instance().Map();
  const auto range = known.find(domain);
  std::int64_t version = range == known.end() ? 1 : range->second.second;
  if (domain.empty() && newestOpset_ != 0) version = newestOpset_;
  warnings_.push_back("the version of the operators of " +
                      (domain.empty() ? std::string("ai.onnx") : domain) +
                      " is not recorded, " + std::to_string(version) +
                      " is taken");
  opsets_[domain] = version;
  return version;
}

// ---- graphs, tensors and nodes ----

GraphIndex ModelBuilder::addGraph(std::string name) {
  graphs_.push_back({std::move(name), std::nullopt, {}});
  return graphs_.size() - 1;
}

GraphIndex ModelBuilder::addSubgraph(GraphIndex parent, std::string name) {
  graphs_.push_back({std::move(name), parent, {}});
  return graphs_.size() - 1;
}

std::optional<Fault> ModelBuilder::addTensor(GraphIndex graph,
                                             const Kiv_Tensor_t& tensor) {
  return add(tensor, graph, false);
}

std::optional<Fault> ModelBuilder::addContextTensor(
    const Kiv_Tensor_t& tensor) {
  const std::optional<GraphIndex> last =
      graphs_.empty() ? std::nullopt : std::optional(graphs_.size() - 1);
  return add(tensor, last, true);
}

std::optional<Fault> ModelBuilder::add(const Kiv_Tensor_t& tensor,
                                       std::optional<GraphIndex> graph,
                                       bool isOfContext) {
  if (auto fault = check(tensor)) return fault;
  const Kiv_TensorV1_t& record = plain(tensor);
  if (valuesById_.contains(record.id))
    return faultOf(tensor, KIV_TENSOR_ERROR_ALREADY_EXISTS,
                   "has the id of an earlier one");
  auto value = std::make_unique<Value>();
  value->name = nameOrId(record.name, record.id);
  while (!names_.insert(value->name).second)
    value->name += "_" + std::to_string(record.id);
  value->type = record.type;
  value->graph = graph;
  value->isOfContext = isOfContext;
  if (record.type == KIV_TENSOR_TYPE_STATIC) {
    value->initializer = std::make_unique<onnx::TensorProto>();
    value->initializer->set_name(value->name);
    describe(tensor, *value->initializer);
    if (auto fault = checkSize(tensor, *value->initializer)) {
      names_.erase(value->name);
      return fault;
    }
    sink_(bytesOf(record), *value->initializer);
  } else {
    value->info.set_name(value->name);
    if (record.name != nullptr) value->info.set_doc_string(record.name);
    describe(tensor, value->info);
  }
  valuesById_[record.id] = value.get();
  values_.push_back(std::move(value));
  return std::nullopt;
}

std::string_view ModelBuilder::nameOf(std::uint32_t id) const {
  const auto found = valuesById_.find(id);
  return found == valuesById_.end() ? std::string_view{} : found->second->name;
}

std::optional<Fault> ModelBuilder::addValues(GraphIndex graph,
                                             const Kiv_Tensor_t* tensors,
                                             std::uint32_t count,
                                             bool areOutputs,
                                             onnx::NodeProto& node) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const Kiv_TensorV1_t& record = plain(tensors[i]);
    auto& names = areOutputs ? *node.mutable_output() : *node.mutable_input();
    if (record.type == KIV_TENSOR_TYPE_NULL) {
      names.Add("");
      continue;
    }
    const auto found = valuesById_.find(record.id);
    if (found == valuesById_.end() ||
        (!found->second->isOfContext && found->second->graph != graph))
      return faultOf(tensors[i], KIV_GRAPH_ERROR_INVALID_TENSOR,
                     "was created neither in the graph nor in its context");
    Value& value = *found->second;
    names.Add(std::string(value.name));
    if (areOutputs)
      value.producer = graph;
    else
      value.readers.insert(graph);
  }
  return std::nullopt;
}

std::optional<Fault> ModelBuilder::addNode(GraphIndex graph,
                                           const Kiv_OpConfig_t& config) {
  if (config.version != KIV_OP_CONFIG_VERSION_1)
    return Fault{KIV_COMMON_ERROR_NOT_SUPPORTED,
                 "the version of an operation's record is unknown"};
  const Kiv_OpConfigV1_t& record = config.v1;
  if (record.typeName == nullptr)
    return Fault{KIV_BACKEND_ERROR_INVALID_ARGUMENT,
                 "an operation has no type"};
  onnx::NodeProto node;
  if (record.name != nullptr) node.set_name(record.name);
  node.set_op_type(record.typeName);
  const std::string domain = plainDomain(
      record.packageName == nullptr ? "" : std::string(record.packageName));
  if (!domain.empty()) node.set_domain(domain);
  auto fault = addAttributes(
      record, domain, versionOf(domain),
      [&](const std::string& name) { return childOf(graph, name).has_value(); },
      sink_, node);
  if (!fault)
    fault =
        addValues(graph, record.inputTensors, record.numInputs, false, node);
  if (!fault)
    fault =
        addValues(graph, record.outputTensors, record.numOutputs, true, node);
  if (fault) {
    fault->message =
        "node " + node.name() + " (" + node.op_type() + "): " + fault->message;
    return fault;
  }
  graphs_[graph].nodes.push_back(std::move(node));
  return std::nullopt;
}

// ---- the model ----

GraphIndex ModelBuilder::rootOf(GraphIndex graph) const {
  while (graphs_[graph].parent) graph = *graphs_[graph].parent;
  return graph;
}

// The graph among `root` and its subgraphs in which a value is declared.
std::optional<GraphIndex> ModelBuilder::homeOf(const Value& value,
                                               GraphIndex root) const {
  const auto isBelow = [&](GraphIndex graph) { return rootOf(graph) == root; };
  if (!value.isOfContext)
    return isBelow(*value.graph) ? value.graph : std::nullopt;
  const bool isUsed = std::ranges::any_of(value.readers, isBelow) ||
                      (value.producer && isBelow(*value.producer));
  if (value.type == KIV_TENSOR_TYPE_STATIC)
    return isUsed ? std::optional(root) : std::nullopt;
  if (value.producer && isBelow(*value.producer)) return value.producer;
  if (value.graph && isBelow(*value.graph)) return value.graph;
  return isUsed ? std::optional(root) : std::nullopt;
}

std::optional<GraphIndex> ModelBuilder::childOf(GraphIndex graph,
                                                std::string_view name) const {
  for (GraphIndex i = 0; i < graphs_.size(); ++i)
    if (graphs_[i].parent == graph && graphs_[i].name == name) return i;
  return std::nullopt;
}

void ModelBuilder::fillGraph(
    GraphIndex index,
    const std::map<GraphIndex, std::vector<const Value*>>& values, bool isMain,
    onnx::GraphProto& proto) const {
  proto.set_name(graphs_[index].name);
  const auto own = values.find(index);
  const auto add = [isMain](const Value& value, onnx::ValueInfoProto& info) {
    info = value.info;
    // A shape that is not known looks there as that of a single value.
    auto& type = *info.mutable_type()->mutable_tensor_type();
    if (!isMain && type.shape().dim_size() == 0) type.clear_shape();
  };
  for (const Value* value :
       own == values.end() ? std::vector<const Value*>{} : own->second) {
    if (value->initializer) *proto.add_initializer() = *value->initializer;
    if (isInput(value->type)) add(*value, *proto.add_input());
    if (isOutput(value->type)) add(*value, *proto.add_output());
  }
  for (const onnx::NodeProto& node : graphs_[index].nodes) {
    onnx::NodeProto& copy = *proto.add_node() = node;
    const auto fill = [&](onnx::GraphProto& graph) {
      const auto child = childOf(index, graph.name());
      if (child) fillGraph(*child, values, false, graph);
    };
    for (onnx::AttributeProto& attribute : *copy.mutable_attribute()) {
      if (attribute.has_g()) fill(*attribute.mutable_g());
      for (onnx::GraphProto& graph : *attribute.mutable_graphs()) fill(graph);
    }
  }
}

onnx::ModelProto ModelBuilder::build(GraphIndex graph) const {
  std::map<GraphIndex, std::vector<const Value*>> values;
  for (const auto& value : values_)
    if (const auto home = homeOf(*value, graph))
      values[*home].push_back(value.get());
  onnx::ModelProto model;
  model.set_ir_version(kIrVersion);
  for (const auto& [domain, version] : opsets_) {
    auto& opset = *model.add_opset_import();
    opset.set_domain(domain);
    opset.set_version(version);
  }
  fillGraph(graph, values, true, *model.mutable_graph());
  return model;
}

}  // namespace kiv::onnx_model
