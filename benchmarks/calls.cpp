#include "calls.h"

#include <cstdio>
#include <stdexcept>
#include <utility>

#include "Saver/KivSaver.h"
#include "support/provider.h"

namespace kiv::benchmarks {
namespace {

namespace fs = std::filesystem;
using Api = KivInterface_Implementation_t;

void check(Kiv_ErrorHandle_t status, const char* call) {
  if (status != KIV_SUCCESS)
    throw std::runtime_error(std::string(call) + " returned " +
                             std::to_string(status));
}

// Names that are never the same, all of one length, in memory that does not
// grow with the number of calls.
class CountedNames {
 public:
  explicit CountedNames(const char* prefix) : prefix_(prefix) {}

  void prepare(std::size_t count) {
    texts_.resize(count);
    for (auto& text : texts_)
      std::snprintf(text.data(), text.size(), "%s_%07zu", prefix_, next_++);
  }
  const char* operator[](std::size_t index) const {
    return texts_[index].data();
  }

 private:
  const char* prefix_;
  std::size_t next_ = 0;
  std::vector<std::array<char, 64>> texts_;
};

Kiv_Tensor_t tensorOf(const char* name, Kiv_TensorType_t type,
                      std::array<uint32_t, 4>& dimensions) {
  Kiv_Tensor_t tensor = test::emptyTensor();
  tensor.v1.name = name;
  tensor.v1.type = type;
  tensor.v1.rank = static_cast<uint32_t>(dimensions.size());
  tensor.v1.dimensions = dimensions.data();
  return tensor;
}

Kiv_Param_t scalarParam(const char* name, Kiv_DataType_t type) {
  Kiv_Param_t param{};
  param.paramType = KIV_PARAM_TYPE_SCALAR;
  param.name = name;
  param.scalarParam.dataType = type;
  return param;
}

class NodeCall : public Call {
 public:
  NodeCall(const Api& api, const test::Objects& objects)
      : api_(api), graph_(objects.graph) {
    for (Kiv_Tensor_t& tensor : tensors_)
      check(api.tensorCreateGraphTensor(graph_, &tensor), "a node's tensor");
    params_[0].scalarParam.uint32Value = 2;
    params_[1].scalarParam.bool8Value = 1;
    params_[2].scalarParam.floatValue = 0.1F;
    node_.v1.packageName = "package";
    node_.v1.typeName = "ElementWiseAdd";
    node_.v1.numParams = static_cast<uint32_t>(params_.size());
    node_.v1.params = params_.data();
    node_.v1.numInputs = 2;
    node_.v1.inputTensors = tensors_.data();
    node_.v1.numOutputs = 1;
    node_.v1.outputTensors = &tensors_[2];
  }

  void prepare(std::size_t count) override { names_.prepare(count); }
  void make(std::size_t index) override {
    node_.v1.name = names_[index];
    check(api_.graphAddNode(graph_, node_), "graphAddNode");
  }

 private:
  const Api& api_;
  const Kiv_GraphHandle_t graph_;
  CountedNames names_{"block_1"};
  std::array<uint32_t, 4> dimensions_ = {1, 112, 112, 64};
  std::array<Kiv_Tensor_t, 3> tensors_ = {
      tensorOf("block1/conv2", KIV_TENSOR_TYPE_NATIVE, dimensions_),
      tensorOf("block1/input", KIV_TENSOR_TYPE_NATIVE, dimensions_),
      tensorOf("block1/add", KIV_TENSOR_TYPE_NATIVE, dimensions_)};
  std::array<Kiv_Param_t, 3> params_ = {
      scalarParam("activation", KIV_DATA_TYPE_UINT_32),
      scalarParam("broadcast", KIV_DATA_TYPE_BOOL_8),
      scalarParam("scale", KIV_DATA_TYPE_FLOAT_32)};
  Kiv_OpConfig_t node_ = test::emptyOpConfig("");
};

class TensorCall : public Call {
 public:
  TensorCall(const Api& api, const test::Objects& objects, std::size_t dataSize)
      : api_(api), graph_(objects.graph), data_(dataSize, 'd') {
    if (dataSize == 0) return;
    dimensions_ = {1, 1, 1, static_cast<uint32_t>(dataSize / sizeof(float))};
    tensor_.v1.type = KIV_TENSOR_TYPE_STATIC;
    tensor_.v1.clientBuf = {data_.data(), static_cast<uint32_t>(dataSize)};
  }

  void prepare(std::size_t count) override { names_.prepare(count); }
  void make(std::size_t index) override {
    tensor_.v1.name = names_[index];
    check(api_.tensorCreateGraphTensor(graph_, &tensor_),
          "tensorCreateGraphTensor");
  }
  std::string_view data() const override { return data_; }

 private:
  const Api& api_;
  const Kiv_GraphHandle_t graph_;
  std::string data_;
  CountedNames names_{"conv2"};
  std::array<uint32_t, 4> dimensions_ = {1, 112, 112, 64};
  Kiv_Tensor_t tensor_ = tensorOf("", KIV_TENSOR_TYPE_NATIVE, dimensions_);
};

class OperationsCall : public Call {
 public:
  OperationsCall(const Api& api, const test::Objects& objects)
      : api_(api), backend_(objects.backend) {}

  void prepare(std::size_t) override {}
  void make(std::size_t) override {
    uint32_t count = 0;
    const KivBackend_OperationName_t* operations = nullptr;
    check(api_.backendGetSupportedOperations(backend_, &count, &operations),
          "backendGetSupportedOperations");
  }

 private:
  const Api& api_;
  const Kiv_BackendHandle_t backend_;
};

class PropertyCall : public Call {
 public:
  explicit PropertyCall(const Api& api) : api_(api) {}

  void prepare(std::size_t) override {}
  void make(std::size_t) override {
    check(api_.propertyHasCapability(kKey), "propertyHasCapability");
  }

 private:
  static constexpr KivProperty_Key_t kKey = 101;
  const Api& api_;
};

void setDirectory(const test::DynamicLibrary& library, const fs::path& path) {
  const std::string text = path.string();
  KivSaver_Config_t option{};
  option.option = KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY;
  option.outputDirectory = text.c_str();
  const KivSaver_Config_t* options[] = {&option, nullptr};
  check(
      library.function<KivSaver_InitializeFn_t>("KivSaver_initialize")(options),
      "KivSaver_initialize");
}

}  // namespace

Recorder::Recorder(const std::string& library, fs::path directory)
    : directory_(std::move(directory)), library_(library) {
  // Another's directory would be removed at the end.
  if (!fs::create_directory(directory_))
    throw std::runtime_error(directory_.string() + " exists already");
  setDirectory(library_, directory_);
  objects_ = test::createObjects(api(), "net");
  if (objects_.graph == nullptr)
    throw std::runtime_error("Nothing can be recorded into " +
                             directory_.string());
}

Recorder::~Recorder() {
  library_.unload();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

const Api& Recorder::api() const { return test::interfaceOf(library_); }

Kiv_GraphHandle_t Recorder::newGraph(const char* name) const {
  Kiv_GraphHandle_t graph = nullptr;
  check(api().graphCreate(objects_.context, name, nullptr, &graph),
        "graphCreate");
  return graph;
}

fs::path Recorder::modelPath() const { return directory_ / "saver_output.c"; }
fs::path Recorder::dataPath() const { return directory_ / "params.bin"; }

std::unique_ptr<Call> makeCall(std::string_view name, const Api& api,
                               const test::Objects& objects) {
  if (name == "node") return std::make_unique<NodeCall>(api, objects);
  if (name == "tensor") return makeDataCall(0, api, objects);
  if (name == "operations")
    return std::make_unique<OperationsCall>(api, objects);
  if (name == "property") return std::make_unique<PropertyCall>(api);
  throw std::runtime_error("There is no kind of call named " +
                           std::string(name));
}

std::unique_ptr<Call> makeDataCall(std::size_t dataSize, const Api& api,
                                   const test::Objects& objects) {
  return std::make_unique<TensorCall>(api, objects, dataSize);
}

}  // namespace kiv::benchmarks
