#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kiv_recording/answers.h"
#include "onnx_model/model_builder.h"
#include "recording/program.h"

// A recording's network as an ONNX model whose weights are in a data file:
//
//   NetworkExport network("params.bin");
//   if (!network.read(*recording, bytes, "main")) return network.problem();
//   network.model();
//
// One thread at a time.
namespace kiv::tool {

class NetworkExport {
 public:
  // The name of the data file as it stands in the model.
  explicit NetworkExport(std::string dataFile)
      : dataFile_(std::move(dataFile)) {}

  // Of the graph with that name; an empty name is that of the one graph that is
  // no subgraph.
  bool read(const recording::Recording& recording, std::span<std::byte> data,
            const std::string& graphName);
  // What is wrong, after false.
  const std::string& problem() const { return problem_; }

  const onnx::ModelProto& model() const { return model_; }
  // Whether the model refers to the data file.
  bool usesDataFile() const { return usesDataFile_; }
  // Of the graph's first execution, in the order of the model's inputs.
  const std::vector<onnx::TensorProto>& inputs() const { return inputs_; }
  const std::vector<std::string>& notes() const { return notes_; }

 private:
  using Arguments = recording::Arguments;

  // The model that the calls of one context make. It is found by the context's
  // handle.
  struct Context {
    std::unique_ptr<onnx_model::ModelBuilder> builder;
  };
  struct Graph {
    std::string name;
    std::uint64_t context = 0;
    onnx_model::GraphIndex index = 0;
    bool isSubgraph = false;
    std::uint64_t executions = 0;
    // Of the first execution: inputs by name, and names in its order.
    std::map<std::string, onnx::TensorProto> inputs;
    std::vector<std::string> inputOrder;
    std::vector<std::string> outputOrder;
  };

  std::optional<onnx_model::Fault> visit(const Arguments& arguments);
  void readOptions(const Arguments& arguments);
  void addContext(std::uint64_t handle);
  void addGraph(const Arguments& arguments);
  void addSubgraph(const Arguments& arguments);
  std::optional<onnx_model::Fault> addTensor(const Arguments& arguments);
  std::optional<onnx_model::Fault> addNode(const Arguments& arguments);
  std::optional<onnx_model::Fault> execute(const Arguments& arguments);
  void store(std::span<const std::byte> data, onnx::TensorProto& proto);
  bool finish(const std::string& graphName);
  void takeInputs(const Graph& graph);

  std::string dataFile_;
  const recording::Call* call_ = nullptr;
  Answers answers_;
  std::vector<std::string> options_;
  std::map<std::uint64_t, Context> contexts_;
  // By their handles.
  std::map<std::uint64_t, Graph> graphs_;
  onnx::ModelProto model_;
  std::vector<onnx::TensorProto> inputs_;
  std::vector<std::string> notes_;
  std::string problem_;
  bool usesDataFile_ = false;
};

}  // namespace kiv::tool
