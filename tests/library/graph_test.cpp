#include <gtest/gtest.h>

#include "library/started_session.h"

// Graphs, their names and tensors, nodes and executions.
namespace kiv::test {
namespace {

// A node of the graph g, without parameters and outputs; with an input or none.
std::string nodeText(const std::string& name, const std::string& literal,
                     const std::string& inputText = "") {
  const bool none = inputText.empty();
  return "   Kiv_Param_t* " + name + "_params = NULL;\n" + inputText +
         (none ? "   Kiv_Tensor_t* " + name + "_inputs = NULL;\n"
               : "   Kiv_Tensor_t " + name + "_inputs[] = {" + name +
                     "_input_0};\n") +
         recorded({"Kiv_Tensor_t* " + name + "_outputs = NULL;",
                   "Kiv_OpConfigV1_t " + name + "_v1 = {" + literal +
                       ", NULL, NULL, 0, " + name + "_params, " +
                       (none ? "0, " : "1, ") + name + "_inputs, 0, " + name +
                       "_outputs};",
                   "Kiv_OpConfig_t " + name +
                       " = {(Kiv_OpConfigVersion_t)1, .v1 = " + name + "_v1};",
                   validate("graphAddNode(g, " + name + ")")});
}

// An execution with inputs from emptyTensor(), by the texts of their ids.
std::string executeText(const std::string& graph, const std::string& number,
                        const std::vector<std::string>& ids,
                        const std::string& profile = "NULL") {
  std::string text;
  std::string names;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const std::string name =
        graph + "_inputTensor_" + number + '_' + std::to_string(i);
    text += tensorText(name, ids[i]);
    names += (i == 0 ? "" : ", ") + name;
  }
  const std::string inputs = graph + "_inputTensors_" + number;
  const std::string outputs = graph + "_outputTensors_" + number;
  return text + recorded({"Kiv_Tensor_t " + inputs + "[] = {" + names + "};",
                          "Kiv_Tensor_t " + outputs + "[] = {};",
                          validate("graphExecute(" + graph + ", " + inputs +
                                   ", " + std::to_string(ids.size()) + ", " +
                                   outputs + ", 0, " + profile + ", NULL)")});
}

Kiv_Tensor_t tensorWithId(uint32_t id) {
  Kiv_Tensor_t tensor = emptyTensor();
  tensor.v1.id = id;
  return tensor;
}

TEST(Graph, NodesAreNamedAfterTheirOperation) {
  const StartedSession c;
  std::string expected;
  for (const auto& [name, variable] :
       {std::pair("1x1 conv", "_1x1_conv_0"),
        std::pair("1x1 conv", "_1x1_conv_1"), std::pair("()", "opConfig_0"),
        std::pair("opConfig", "opConfig_1")}) {
    EXPECT_EQ(c.api.graphAddNode(c.graph, emptyOpConfig(name)), 0U);
    EXPECT_TRUE(c.saver.calls().ends_with(
        nodeText(variable, '"' + std::string(name) + '"')));
  }
  EXPECT_EQ(c.api.graphAddNode(c.graph, emptyOpConfig(nullptr)), 0U);
  EXPECT_TRUE(c.saver.calls().ends_with(nodeText("opConfig_2", "NULL")));
}

TEST(Graph, Names) {
  static Kiv_GraphHandle_t out;
  const auto create = [](const std::string& variable, const std::string& name) {
    return recorded({"Kiv_GraphHandle_t " + variable + ";",
                     validate("graphCreate(context_0, \"" + name +
                              "\", NULL, &" + variable + ")")});
  };
  check({
      {"no identifier, and one that the program has",
       [](StartedSession& c) {
         for (const char* name :
              {"a /|-:;.,+b", "\xC3\xA9", "", "4x", "error", "a_________b"})
           EXPECT_EQ(c.createGraph(name, &out), 0U) << name;
         return 0;
       },
       0,
       {},
       create("a_________b", "a /|-:;.,+b") + create("graph", "\xC3\xA9") +
           create("graph_0", "") + create("_4x", "4x") +
           create("error_0", "error") + create("a_________b_0", "a_________b"),
       ""},
      {"one name in two contexts",
       [](StartedSession& c) {
         Kiv_ContextHandle_t other = nullptr;
         c.api.contextCreate(nullptr, nullptr, nullptr, &other);
         c.newText();
         EXPECT_EQ(c.api.graphCreate(other, "g", nullptr, &out), 0U);
         EXPECT_NE(out, c.graph);
         EXPECT_EQ(c.api.contextFree(other, nullptr), 0U);
         EXPECT_EQ(c.api.graphFinalize(c.graph, nullptr, nullptr), 0U);
         return c.api.graphFinalize(out, nullptr, nullptr);
       },
       6001,
       {"1: No graph associated with the provided handle"},
       recorded({"Kiv_GraphHandle_t g_0;",
                 validate("graphCreate(context_1, \"g\", NULL, &g_0)"), "",
                 validate("contextFree(context_1, NULL)"), "",
                 validate("graphFinalize(g, NULL, NULL)")}),
       ""},
      {"retrieve: the graph of that name, or a new one",
       [](StartedSession& c) {
         EXPECT_EQ(c.api.graphRetrieve(c.context, "g", &out), 0U);
         EXPECT_EQ(out, c.graph);
         EXPECT_EQ(c.api.graphRetrieve(c.context, "from binary", &out), 0U);
         EXPECT_NE(out, c.graph);
         EXPECT_EQ(c.api.graphFinalize(out, nullptr, nullptr), 0U);
         return c.createGraph("from binary", &out);
       },
       6003,
       {"1: Graph with name from binary already exists within the context"},
       recorded({"Kiv_GraphHandle_t g_0;",
                 validate("graphRetrieve(context_0, \"g\", &g_0)"), "",
                 "Kiv_GraphHandle_t from_binary;",
                 validate("graphRetrieve(context_0, \"from binary\", "
                          "&from_binary)"),
                 "", validate("graphFinalize(from_binary, NULL, NULL)")}),
       ""},
      {"a graph that was not recorded leaves its name free",
       [](StartedSession& c) {
         out = nullptr;
         List list = {configOf<KivGraph_Config_t>(1)};
         EXPECT_EQ(c.api.graphCreate(c.context, "h", list, &out), 6000U);
         EXPECT_EQ(out, nullptr);
         return c.createGraph("h", &out);
       },
       0,
       {"1: Unknown config option provided: 1"},
       create("h", "h"),
       ""},
      {"raw text with a warning",
       [](StartedSession& c) { return c.createGraph("a\"b", &out); },
       0,
       {"2: A text holds a quote, a backslash or a line end and will not read "
        "back from the recording as it was given: a\"b"},
       create("ab", "a\"b"),
       ""},
  });
}

TEST(Tensor, CreationTextAndIds) {
  StartedSession c;
  // As a client sees it: id 99 goes into the recording, 1 comes back.
  Kiv_Tensor_t tensor =
      emptyTensor(KIV_TENSOR_VERSION_1, KIV_DATA_TYPE_UFIXED_POINT_8);
  tensor.v1.id = 99;
  tensor.v1.quantizeParams.encodingDefinition = KIV_DEFINITION_DEFINED;
  tensor.v1.quantizeParams.quantizationEncoding =
      KIV_QUANTIZATION_ENCODING_SCALE_OFFSET;
  tensor.v1.quantizeParams.scaleOffsetEncoding = {0.5F, 0};
  ASSERT_EQ(c.api.tensorCreateContextTensor(c.context, &tensor), 0U);
  EXPECT_EQ(tensor.v1.id, 1U);
  EXPECT_EQ(
      c.newText(),
      recorded(
          {"Kiv_QuantizeParams_t context_0_tensor_0_quantizeParams = "
           "{(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)0, "
           ".scaleOffsetEncoding = {0.5, 0}};",
           "Kiv_ClientBuffer_t context_0_tensor_0_clientBuf = {NULL, 0};",
           "Kiv_TensorV1_t context_0_tensor_0_v1 = {99, NULL, "
           "(Kiv_TensorType_t)0, 0, (Kiv_DataType_t)1032, "
           "context_0_tensor_0_quantizeParams, 0, NULL, "
           "(Kiv_TensorMemType_t)0, context_0_tensor_0_clientBuf};",
           "Kiv_Tensor_t context_0_tensor_0 = {(Kiv_TensorVersion_t)1, .v1 = "
           "context_0_tensor_0_v1};",
           validate("tensorCreateContextTensor(context_0, "
                    "&context_0_tensor_0)")}));

  // Every owner counts its names, all together count the ids.
  Kiv_Tensor_t second = emptyTensor(KIV_TENSOR_VERSION_2);
  ASSERT_EQ(c.api.tensorCreateGraphTensor(c.graph, &second), 0U);
  EXPECT_EQ(second.v2.id, 2U);
  Kiv_Tensor_t third = emptyTensor();
  ASSERT_EQ(c.api.tensorCreateContextTensor(c.context, &third), 0U);
  EXPECT_EQ(third.v1.id, 3U);
  EXPECT_EQ(
      c.newText(),
      tensorText("g_tensor_0", "0", "2") +
          recorded({validate("tensorCreateGraphTensor(g, &g_tensor_0)")}) +
          tensorText("context_0_tensor_1", "0") +
          recorded({validate("tensorCreateContextTensor(context_0, "
                             "&context_0_tensor_1)")}));
}

// A context's tensor that cannot be written is registered, a graph's is not;
// neither can be referred to.
TEST(Tensor, RegistrationOfWhatCannotBeWritten) {
  StartedSession c;
  LogCapture log(c.api);
  Kiv_Tensor_t handle = emptyTensor();
  handle.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  handle.v1.id = 50;
  EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &handle), 6004U);
  EXPECT_EQ(handle.v1.id, 50U);
  EXPECT_EQ(c.api.tensorCreateContextTensor(c.context, &handle), 0U);
  EXPECT_EQ(handle.v1.id, 1U);
  constexpr const char* kMemory =
      "1: Failed to parse Kiv_Tensor_t, MemHandle is not supported.";
  EXPECT_EQ(log.take(), (std::vector<std::string>{kMemory, kMemory}));

  Kiv_Tensor_t unknown = emptyTensor(static_cast<Kiv_TensorVersion_t>(3));
  unknown.v1.id = 50;
  EXPECT_EQ(c.api.tensorCreateContextTensor(c.context, &unknown), 0U);
  EXPECT_EQ(unknown.v1.id, 50U);
  EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &unknown), 1000U);
  EXPECT_EQ(log.take(),
            (std::vector<std::string>{"1: Unsupported tensor version 3.\n",
                                      "1: Unsupported tensor version: 3.\n",
                                      "1: Unsupported tensor version 3.\n",
                                      "1: Unsupported tensor version: 3.\n"}));

  char data = 0;
  Kiv_Tensor_t text = tensorWithData(&data, 1, KIV_DATA_TYPE_STRING);
  EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &text), 7999U);
  EXPECT_EQ(
      log.take(),
      (std::vector<std::string>{"1: Invalid Kiv_DataType_t provided: 1544"}));
  EXPECT_EQ(c.newText() + c.newData(), "");

  // The ids 1 and 2 are taken, by tensors that the recording does not hold.
  Kiv_Tensor_t next = emptyTensor();
  ASSERT_EQ(c.api.tensorCreateGraphTensor(c.graph, &next), 0U);
  EXPECT_EQ(next.v1.id, 3U);
  c.newText();
  EXPECT_EQ(c.execute(c.graph, {tensorWithId(1), tensorWithId(3)}), 0U);
  EXPECT_EQ(c.newText(), executeText("g", "0", {"1", "g_tensor_3.v1.id"}));
}

TEST(Tensor, IdsAreLookedUpFromTheInnermostOwnerOutwards) {
  StartedSession c;
  Kiv_GraphHandle_t inner = nullptr;
  Kiv_GraphHandle_t sibling = nullptr;
  Kiv_ContextHandle_t other = nullptr;
  c.api.graphCreateSubgraph(c.graph, "inner", &inner);
  c.createGraph("sibling", &sibling);
  c.api.contextCreate(nullptr, nullptr, nullptr, &other);
  Kiv_Tensor_t tensor = emptyTensor();
  c.api.tensorCreateContextTensor(c.context, &tensor);
  c.api.tensorCreateGraphTensor(c.graph, &tensor);
  c.api.tensorCreateGraphTensor(inner, &tensor);
  c.api.tensorCreateGraphTensor(sibling, &tensor);
  c.api.tensorCreateContextTensor(other, &tensor);
  ASSERT_EQ(tensor.v1.id, 5U);
  c.newText();

  std::vector<Kiv_Tensor_t> all;
  for (uint32_t id = 0; id <= 6; ++id) all.push_back(tensorWithId(id));
  EXPECT_EQ(c.execute(inner, all), 0U);
  EXPECT_EQ(c.newText(),
            executeText("inner", "0",
                        {"0", "context_0_tensor_0.v1.id", "g_tensor_0.v1.id",
                         "inner_tensor_0.v1.id", "4", "5", "6"}));
  EXPECT_EQ(c.execute(c.graph, all), 0U);
  EXPECT_EQ(c.newText(), executeText("g", "0",
                                     {"0", "context_0_tensor_0.v1.id",
                                      "g_tensor_0.v1.id", "3", "4", "5", "6"}));

  // The member is that of the referring record; validation refers to nothing.
  Kiv_Tensor_t second = emptyTensor(KIV_TENSOR_VERSION_2);
  second.v2.id = 2;
  Kiv_OpConfig_t op = emptyOpConfig("op");
  op.v1.numInputs = 1;
  op.v1.inputTensors = &second;
  EXPECT_EQ(c.api.graphAddNode(c.graph, op), 0U);
  EXPECT_EQ(c.newText(),
            nodeText("op_0", "\"op\"",
                     tensorText("op_0_input_0", "g_tensor_0.v2.id", "2")));
  op.v1.name = nullptr;
  EXPECT_EQ(c.api.backendValidateOpConfig(c.backend, op), 0U);
  EXPECT_TRUE(c.newText().find(tensorText("opConfig_0_input_0", "2", "2")) !=
              std::string::npos);
}

TEST(Graph, FailedExecutionsLeaveNothing) {
  StartedSession c;
  LogCapture log(c.api);
  char data[] = "12";
  Kiv_Tensor_t bad = emptyTensor();
  bad.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  EXPECT_EQ(c.execute(c.graph, {tensorWithData(data, 2), bad}), 6004U);
  EXPECT_EQ(log.take().size(), 1U);
  EXPECT_EQ(
      c.api.graphExecute(c.graph, nullptr, 0, nullptr, 1, nullptr, nullptr),
      6000U);
  EXPECT_EQ(log.take().size(), 1U);
  EXPECT_EQ(c.newText() + c.newData(), "");
  EXPECT_EQ(c.execute(c.graph, {}, c.profile), 0U);
  EXPECT_EQ(c.newText(), executeText("g", "0", {}, "profile_0"));
  EXPECT_EQ(c.execute(c.graph, {}), 0U);
  EXPECT_EQ(c.newText(), executeText("g", "1", {}));
}

}  // namespace
}  // namespace kiv::test
