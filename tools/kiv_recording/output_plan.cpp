#include "kiv_recording/output_plan.h"

#include <algorithm>
#include <limits>
#include <map>
#include <numeric>

#include "arrays/array.h"
#include "kiv_recording/answers.h"
#include "kiv_recording/recordings.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Value;
namespace calls = format::calls;

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();

bool hasOpenSize(const Kiv_Tensor_t& tensor) {
  if (tensor.version != KIV_TENSOR_VERSION_2 ||
      tensor.v2.isDynamicDimensions == nullptr)
    return false;
  const std::uint8_t* const flags = tensor.v2.isDynamicDimensions;
  return std::any_of(flags, flags + tensor.v2.rank,
                     [](std::uint8_t flag) { return flag != 0; });
}

std::optional<std::uint64_t> sizeOf(const Kiv_Tensor_t& tensor) {
  const auto element = arrays::elementOf(tensor.v1.dataType);
  if (!element || hasOpenSize(tensor) ||
      (tensor.v1.rank != 0 && tensor.v1.dimensions == nullptr))
    return std::nullopt;
  const arrays::Shape shape(tensor.v1.dimensions,
                            tensor.v1.dimensions + tensor.v1.rank);
  const auto count = arrays::countOf(shape);
  if (!count || *count > kLargest / element->size) return std::nullopt;
  return *count * element->size;
}

std::uint64_t handleOf(const Arguments& arguments, std::string_view name) {
  const Value* const value = arguments.find(name);
  return value == nullptr ? 0 : value->bits;
}

}  // namespace

// ---- OwnedTensor ----

OwnedTensor::OwnedTensor(const Kiv_Tensor_t& tensor)
    : record_(tensor.v1),
      name_(orEmpty(tensor.v1.name)),
      size_(sizeOf(tensor)) {
  if (record_.dimensions != nullptr)
    dimensions_.assign(record_.dimensions, record_.dimensions + record_.rank);
  const Kiv_QuantizeParams_t& params = record_.quantizeParams;
  const auto encoding = params.quantizationEncoding;
  if (encoding == KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET) {
    const auto& axis = params.axisScaleOffsetEncoding;
    if (axis.scaleOffset != nullptr)
      scaleOffsets_.assign(axis.scaleOffset,
                           axis.scaleOffset + axis.numScaleOffsets);
  } else if (encoding == KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET) {
    const auto& axis = params.bwAxisScaleOffsetEncoding;
    if (axis.scales != nullptr)
      scales_.assign(axis.scales, axis.scales + axis.numElements);
    if (axis.offsets != nullptr)
      offsets_.assign(axis.offsets, axis.offsets + axis.numElements);
  }
}

Kiv_Tensor_t OwnedTensor::record() {
  Kiv_Tensor_t tensor{};
  tensor.version = KIV_TENSOR_VERSION_1;
  tensor.v1 = record_;
  tensor.v1.type = KIV_TENSOR_TYPE_OUTPUT;
  tensor.v1.name = name_.c_str();
  tensor.v1.dimensions = dimensions_.empty() ? nullptr : dimensions_.data();
  tensor.v1.memType = KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER;
  tensor.v1.clientBuf = {nullptr, 0};
  Kiv_QuantizeParams_t& params = tensor.v1.quantizeParams;
  if (!scaleOffsets_.empty())
    params.axisScaleOffsetEncoding.scaleOffset = scaleOffsets_.data();
  if (!scales_.empty())
    params.bwAxisScaleOffsetEncoding.scales = scales_.data();
  if (!offsets_.empty())
    params.bwAxisScaleOffsetEncoding.offsets = offsets_.data();
  return tensor;
}

// ---- the look through the recording ----

// Tensors are known by the ids that Answers gives, which count from 1.
class PlanMaker {
 public:
  PlanMaker(OutputPlan& plan, const recording::Recording& recording,
            std::span<std::byte> data, const OutputChoice& choice)
      : plan_(plan),
        recording_(recording),
        program_(recording, data),
        choice_(choice) {}

  std::vector<std::string> make(std::vector<std::string>& notes) {
    Arguments arguments;
    for (std::size_t call = 0; call < recording_.calls().size(); ++call) {
      if (const auto problem = program_.begin(call, arguments))
        return {toString(*problem)};
      answers_.answer(arguments);
      visit(call, arguments);
      program_.end(call);
    }
    choose(notes);
    change();
    finishExecutions();
    return std::move(problems_);
  }

 private:
  struct Graph {
    std::string name;
    bool isSubgraph = false;
    std::uint64_t executions = 0;
  };
  struct Tensor {
    std::size_t call = 0;
    // Null for tensors of a context.
    std::uint64_t graph = 0;
    // The number of the output among those of all nodes, from 1.
    std::uint64_t order = 0;
    std::uint64_t producer = 0;
    std::string name;
    Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
    // Of an intermediate one, until it is chosen or not.
    std::optional<OwnedTensor> record;
    std::optional<std::size_t> added;
  };
  struct NodeUse {
    std::size_t call = 0;
    OutputPlan::NodeTensor place;
    std::uint32_t tensor = 0;
  };
  struct ExecutionFacts {
    std::size_t call = 0;
    std::uint64_t graph = 0;
    std::vector<std::uint32_t> outputs;
  };

  void visit(std::size_t call, const Arguments& arguments) {
    const format::Function* const function = arguments.function;
    if (function == &calls::kGraphCreate || function == &calls::kGraphRetrieve)
      addGraph(arguments, "graph", false);
    else if (function == &calls::kGraphCreateSubgraph)
      addGraph(arguments, "subgraph", true);
    else if (function == &calls::kTensorCreateContextTensor ||
             function == &calls::kTensorCreateGraphTensor)
      addTensor(call, arguments);
    else if (function == &calls::kGraphAddNode)
      addNode(call, arguments);
    else if (function == &calls::kGraphExecute)
      addExecution(call, arguments);
  }

  void addGraph(const Arguments& arguments, std::string_view out,
                bool isSubgraph) {
    const Value* const handle = arguments.find(out);
    if (handle == nullptr || handle->bits == 0) return;
    const Value* const name = arguments.find("name");
    graphs_.try_emplace(
        *handle->pointer<std::uint64_t>(),
        Graph{orEmpty(name->pointer<const char>()), isSubgraph, 0});
  }

  void addTensor(std::size_t call, const Arguments& arguments) {
    const auto* const record =
        arguments.find("tensor")->pointer<const Kiv_Tensor_t>();
    if (record == nullptr || !Answers::hasId(*record)) return;
    Tensor tensor;
    tensor.call = call;
    tensor.graph = handleOf(arguments, "graph");
    tensor.name = orEmpty(record->v1.name);
    tensor.type = record->v1.type;
    if (tensor.type == KIV_TENSOR_TYPE_NATIVE && !choice_.isEmpty() &&
        isChosen(tensor.name))
      tensor.record.emplace(*record);
    tensors_.push_back(std::move(tensor));
  }

  bool isChosen(const std::string& name) const {
    return choice_.isAll ||
           std::ranges::find(choice_.names, name) != choice_.names.end();
  }

  Tensor* find(std::uint32_t id) {
    return id == 0 || id > tensors_.size() ? nullptr : &tensors_[id - 1];
  }

  void addNode(std::size_t call, const Arguments& arguments) {
    const auto& node =
        arguments.find("opConfig")->pointer<const Kiv_OpConfig_t>()->v1;
    const std::uint64_t graph = handleOf(arguments, "graph");
    for (std::uint32_t i = 0; i < node.numInputs; ++i)
      addUse({call, {false, i}, node.inputTensors[i].v1.id});
    for (std::uint32_t i = 0; i < node.numOutputs; ++i) {
      const Kiv_TensorV1_t& output = node.outputTensors[i].v1;
      if (output.type == KIV_TENSOR_TYPE_NULL) continue;
      addUse({call, {true, i}, output.id});
      if (Tensor* const tensor = find(output.id)) {
        tensor->order = ++outputs_;
        tensor->producer = graph;
      }
    }
  }

  void addUse(const NodeUse& use) {
    const Tensor* const tensor = find(use.tensor);
    if (tensor != nullptr && tensor->record) uses_.push_back(use);
  }

  void addExecution(std::size_t call, const Arguments& arguments) {
    ExecutionFacts execution{call, handleOf(arguments, "graph"), {}};
    const auto* const outputs =
        arguments.find("outputs")->pointer<const Kiv_Tensor_t>();
    const std::uint64_t count =
        outputs == nullptr ? 0 : handleOf(arguments, "numOutputs");
    for (std::uint64_t i = 0; i < count; ++i)
      execution.outputs.push_back(outputs[i].v1.id);
    executions_.push_back(std::move(execution));
  }

  // Empty for a tensor that can be an output.
  std::string reasonAgainst(const Tensor& tensor) const {
    const auto producer = graphs_.find(tensor.producer);
    if (producer == graphs_.end()) return "no node writes it";
    if (producer->second.isSubgraph) return "it belongs to a subgraph";
    if (!tensor.record->size()) return "its size is not known";
    // A client that does not know the dimensions may leave them out; a backend
    // that gets a buffer of a wrong size gives none of the outputs.
    if (choice_.isAll && tensor.record->isScalar())
      return "it has no dimensions; name it if it is a single value";
    return "";
  }

  // The tensors that one reason keeps from becoming outputs.
  struct Refused {
    std::string first;
    std::size_t count = 0;
  };

  static std::string refusal(const std::string& name,
                             const std::string& reason) {
    return "tensor \"" + name + "\" cannot become an output: " + reason;
  }

  void choose(std::vector<std::string>& notes) {
    std::map<std::string, Refused> refused;
    for (Tensor& tensor : tensors_) {
      if (!tensor.record) continue;
      const std::string reason = reasonAgainst(tensor);
      if (reason.empty()) {
        tensor.added = plan_.added_.size();
        plan_.added_.push_back({*std::move(tensor.record), tensor.call});
        continue;
      }
      if (choice_.isAll)
        ++refused.try_emplace(reason, Refused{tensor.name, 0})
              .first->second.count;
      else
        problems_.push_back(refusal(tensor.name, reason));
    }
    for (const auto& [reason, tensors] : refused)
      notes.push_back(tensors.count == 1
                          ? refusal(tensors.first, reason)
                          : std::to_string(tensors.count) +
                                " tensors cannot become outputs, such as \"" +
                                tensors.first + "\": " + reason);
    for (const std::string& name : choice_.names) checkName(name);
  }

  void checkName(const std::string& name) {
    const auto found = std::ranges::find(tensors_, name, &Tensor::name);
    if (found == tensors_.end())
      problems_.push_back("no call creates a tensor \"" + name + "\"");
    else if (found->type == KIV_TENSOR_TYPE_STATIC ||
             found->type == KIV_TENSOR_TYPE_INPUT)
      problems_.push_back("tensor \"" + name +
                          "\" is no result of the network: kiv-recording "
                          "extract writes its data");
  }

  void change() {
    for (const Tensor& tensor : tensors_)
      if (tensor.added) plan_.created_[tensor.call] = *tensor.added;
    for (const NodeUse& use : uses_)
      if (find(use.tensor)->added) plan_.nodes_[use.call].push_back(use.place);
  }

  void finishExecutions() {
    std::map<std::uint64_t, std::vector<std::uint32_t>> added;
    for (std::uint32_t id = 1; id <= tensors_.size(); ++id)
      if (tensors_[id - 1].added)
        added[tensors_[id - 1].producer].push_back(id);
    for (ExecutionFacts& facts : executions_) {
      Graph& graph = graphs_[facts.graph];
      OutputPlan::Execution execution{graph.name, graph.executions++, {}, {}};
      std::vector<std::uint32_t> ids = std::move(facts.outputs);
      for (const std::uint32_t id : added[facts.graph]) {
        // The recorded session may have read it there.
        if (std::ranges::find(ids, id) != ids.end()) continue;
        execution.added.push_back(*tensors_[id - 1].added);
        ids.push_back(id);
      }
      execution.order = orderOf(ids);
      plan_.executions_[facts.call] = std::move(execution);
    }
  }

  // Outputs that no node writes come last.
  std::vector<std::size_t> orderOf(const std::vector<std::uint32_t>& ids) {
    std::vector<std::size_t> order(ids.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t index) {
      const Tensor* const tensor = find(ids[index]);
      return tensor == nullptr ? ~std::uint64_t{0} : tensor->order - 1;
    });
    return order;
  }

  OutputPlan& plan_;
  const recording::Recording& recording_;
  recording::Program program_;
  const OutputChoice& choice_;
  Answers answers_;
  std::map<std::uint64_t, Graph> graphs_;
  std::vector<Tensor> tensors_;
  std::vector<NodeUse> uses_;
  std::vector<ExecutionFacts> executions_;
  std::vector<std::string> problems_;
  std::uint64_t outputs_ = 0;
};

// ---- OutputPlan ----

std::vector<std::string> OutputPlan::make(const recording::Recording& recording,
                                          std::span<std::byte> data,
                                          const OutputChoice& choice,
                                          std::vector<std::string>& notes) {
  return PlanMaker(*this, recording, data, choice).make(notes);
}

std::optional<std::size_t> OutputPlan::createdBy(std::size_t call) const {
  const auto found = created_.find(call);
  if (found == created_.end()) return std::nullopt;
  return found->second;
}

std::span<const OutputPlan::NodeTensor> OutputPlan::changesOfNode(
    std::size_t call) const {
  const auto found = nodes_.find(call);
  if (found == nodes_.end()) return {};
  return found->second;
}

const OutputPlan::Execution* OutputPlan::execution(std::size_t call) const {
  const auto found = executions_.find(call);
  return found == executions_.end() ? nullptr : &found->second;
}

}  // namespace kiv::tool
