#include "recording/text_client.h"

#include <array>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "support/records.h"

namespace kiv::test {
namespace {

constexpr std::array kPieces = {
    "a",
    "b c",
    "7",
    "\"",
    "\\",
    "\n",
    "\r\n",
    ", ",
    "name",
    "NULL",
    "\", \"",
    "\", NULL, \"",
    "};\n   ",
    "\"};\n",
    "\"));\n\n",
    "\", (Kiv_TensorType_t)4, 0, ",
    ".scalarParam = ",
    "\", .scalarParam = x};\n",
    "\", 0, p, 0, i, 0, o};\n   // \"",
    "\", NULL, &graph_0));\n\n",
    "VALIDATE(error, interface.backendFree(backend_0));\n\n",
    "   Kiv_Tensor_t x = {(Kiv_TensorVersion_t)1, .v1 = y};\n",
    "   // ",
    "/* ",
    "*/",
    "   if (logging) {\n",
    "}\n",
    "#include \"x\"\n",
};

class Session {
 public:
  Session(const KivInterface_Implementation_t& api, unsigned seed)
      : api_(api), random_(seed) {}

  void run() {
    createBackend();
    for (unsigned graphs = 1 + below(2); graphs != 0; --graphs) buildGraph();
    api_.contextFree(context_, nullptr);
    api_.backendFree(backend_);
  }

 private:
  unsigned below(unsigned limit) {
    return static_cast<unsigned>(random_() % limit);
  }

  std::string pieces() {
    std::string text;
    for (unsigned count = below(5); count != 0; --count)
      text += kPieces[below(kPieces.size())];
    return text;
  }

  const char* text() {
    if (below(8) == 0) return nullptr;
    return texts_.emplace_back(pieces()).c_str();
  }

  const char* name() {
    std::string text = pieces();
    text.insert(below(static_cast<unsigned>(text.size() + 1)),
                std::to_string(++names_));
    return texts_.emplace_back(std::move(text)).c_str();
  }

  void createBackend() {
    KivBackend_Config_t platforms[2] = {};
    for (KivBackend_Config_t& platform : platforms) {
      platform.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
      platform.platformOption = text();
    }
    const KivBackend_Config_t* configs[] = {platforms, platforms + 1, nullptr};
    api_.backendCreate(nullptr, configs, &backend_);
    const char* const path = text();
    const char* const provider = text();
    api_.backendRegisterOpPackage(backend_, path, provider, text());
    KivContext_Config_t oem{};
    oem.option = KIV_CONTEXT_CONFIG_OPTION_OEM_STRING;
    oem.oemString = text();
    const KivContext_Config_t* list[] = {&oem, nullptr};
    api_.contextCreate(backend_, nullptr, list, &context_);
  }

  void buildGraph() {
    Kiv_GraphHandle_t graph = nullptr;
    api_.graphCreate(context_, name(), nullptr, &graph);
    std::vector<Kiv_Tensor_t> tensors(1 + below(3), emptyTensor());
    for (Kiv_Tensor_t& tensor : tensors) {
      tensor.v1.name = name();
      api_.tensorCreateGraphTensor(graph, &tensor);
    }
    for (unsigned nodes = 1 + below(3); nodes != 0; --nodes)
      addNode(graph, tensors);
    api_.graphFinalize(graph, nullptr, nullptr);
  }

  void addNode(Kiv_GraphHandle_t graph, std::vector<Kiv_Tensor_t>& tensors) {
    Kiv_OpConfig_t node = emptyOpConfig(text());
    node.v1.packageName = below(2) != 0 ? "pkg" : text();
    node.v1.typeName = below(2) != 0 ? "Conv" : text();
    std::vector<Kiv_Param_t> params(below(3));
    for (Kiv_Param_t& param : params) {
      param = {};
      param.paramType = KIV_PARAM_TYPE_SCALAR;
      param.name = text();
      param.scalarParam.dataType = KIV_DATA_TYPE_STRING;
      param.scalarParam.stringValue = text();
    }
    node.v1.numParams = static_cast<uint32_t>(params.size());
    node.v1.params = params.data();
    node.v1.numInputs = static_cast<uint32_t>(tensors.size());
    node.v1.inputTensors = tensors.data();
    api_.graphAddNode(graph, node);
  }

  const KivInterface_Implementation_t& api_;
  std::mt19937 random_;
  std::deque<std::string> texts_;
  int names_ = 0;
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
};

}  // namespace

void runTextSession(const KivInterface_Implementation_t& api, unsigned seed) {
  Session(api, seed).run();
}

}  // namespace kiv::test
