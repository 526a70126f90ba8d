#include <gtest/gtest.h>

#include <regex>

#include "library/started_session.h"

// Graphs, their names and tensors, nodes and executions.
namespace kiv::test {
namespace {

using Lines = std::vector<std::string>;

// The texts of tensors' ids in a recording.
Lines idsIn(const std::string& text) {
  static const std::regex pattern(R"(Kiv_TensorV\d_t \w+ = \{([^,]+),)");
  Lines ids;
  for (std::sregex_iterator it(text.begin(), text.end(), pattern), end;
       it != end; ++it)
    ids.push_back((*it)[1]);
  return ids;
}

Kiv_Tensor_t tensorWithId(uint32_t id,
                          Kiv_TensorVersion_t version = KIV_TENSOR_VERSION_1) {
  Kiv_Tensor_t tensor = emptyTensor(version);
  tensor.v1.id = id;
  return tensor;
}

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
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
         for (const char* name : {"a /b", "\xC3\xA9", "", "error", "a__b"})
           EXPECT_EQ(c.createGraph(name, &out), 0U) << name;
         return 0;
       },
       0,
       {},
       create("a__b", "a /b") + create("graph", "\xC3\xA9") +
           create("graph_0", "") + create("error_0", "error") +
           create("a__b_0", "a__b"),
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

// A creation shows the client's number, also one that a tensor has.
TEST(Tensor, IdsAreCountedAndWrittenBack) {
  StartedSession c;
  Kiv_Tensor_t first = tensorWithId(99);
  ASSERT_EQ(c.api.tensorCreateContextTensor(c.context, &first), 0U);
  EXPECT_EQ(first.v1.id, 1U);
  Kiv_Tensor_t second = tensorWithId(1, KIV_TENSOR_VERSION_2);
  ASSERT_EQ(c.api.tensorCreateGraphTensor(c.graph, &second), 0U);
  EXPECT_EQ(second.v2.id, 2U);
  Kiv_Tensor_t third = tensorWithId(1);
  ASSERT_EQ(c.api.tensorCreateContextTensor(c.context, &third), 0U);
  EXPECT_EQ(third.v1.id, 3U);
  const std::string text = c.newText();
  EXPECT_EQ(idsIn(text), (Lines{"99", "1", "1"}));
  // Every owner counts its names.
  for (const char* call : {"tensorCreateContextTensor(context_0, "
                           "&context_0_tensor_0)",
                           "tensorCreateGraphTensor(g, &g_tensor_0)",
                           "tensorCreateContextTensor(context_0, "
                           "&context_0_tensor_1)"})
    EXPECT_TRUE(has(text, validate(call))) << call;
}

// The elements' types in C, each with those of the API that it stands for.
TEST(Tensor, DataIsDeclaredByItsType) {
  const struct {
    const char* name;
    uint32_t size;
    std::vector<int> types;
  } rows[] = {{"int8_t", 1, {0x008, 0x308}},
              {"int16_t", 2, {0x016, 0x316}},
              {"int32_t", 4, {0x032, 0x332}},
              {"int64_t", 8, {0x064}},
              {"uint8_t", 1, {0x108, 0x304, 0x404, 0x408, 0x508}},
              {"uint16_t", 2, {0x116, 0x416}},
              {"uint32_t", 4, {0x132, 0x432}},
              {"uint64_t", 8, {0x164}},
              {"float", 4, {0x216, 0x232}},
              {"double", 8, {0x264}}};
  StartedSession c;
  char data[22] = {};
  for (const auto& row : rows) {
    for (const int type : row.types) {
      // Bytes that do not fill an element are neither written nor read.
      for (const uint32_t bytes : {22U, 0U}) {
        Kiv_Tensor_t tensor =
            tensorWithData(data, bytes, static_cast<Kiv_DataType_t>(type));
        EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), 0U);
        const std::string text = c.newText();
        const std::string count = std::to_string(bytes / row.size);
        EXPECT_TRUE(has(text, std::string("static ") + row.name + " g_"))
            << text;
        EXPECT_TRUE(has(text, "_data[" + count + "];")) << text;
        EXPECT_TRUE(has(
            text, ", " + std::to_string(row.size) + ", " + count + ", fp);"))
            << text;
        EXPECT_TRUE(has(text, "_data, " + std::to_string(bytes) + "};"));
        EXPECT_EQ(has(text, "// Reading 4-bit"), type % 0x100 == 4);
        EXPECT_EQ(c.newData().size(), bytes / row.size * row.size);
      }
    }
  }
}

// A context's tensor that cannot be written is registered, a graph's is not;
// neither can be referred to. The first of several faults is reported; no
// pointer of a record is followed whose version is unknown.
TEST(Tensor, RegistrationOfWhatCannotBeWritten) {
  constexpr uint32_t kAxis = 1, kOther = 4;
  const std::string memory =
      "1: Failed to parse Kiv_Tensor_t, MemHandle is not supported.";
  const struct {
    uint32_t memory, type, encoding, version;
    Code code;
    Lines messages;
  } rows[] = {
      {9, 0x0000, 0, 2, 6004, {memory}},
      {0, 0x0608, 0, 2, 7999, {"1: Invalid Kiv_DataType_t provided: 1544"}},
      {1,
       0x0008,
       kOther,
       1,
       1000,
       {"1: Unsupported quantization encoding: 4.\n"}},
      {1,
       0x0008,
       kOther,
       3,
       1000,
       {"1: Unsupported quantization encoding: 4.\n"}},
      {1, 0x0008, kAxis, 3, 6004, {memory}},
      {0,
       0x0008,
       0,
       3,
       1000,
       {"1: Unsupported tensor version 3.\n",
        "1: Unsupported tensor version: 3.\n"}},
      {0, 0x0001, kAxis, 3, 7999, {"1: Invalid Kiv_DataType_t provided: 1"}}};
  StartedSession c;
  LogCapture log(c.api);
  char data[4] = {};
  uint32_t next = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Kiv_Tensor_t tensor = tensorWithData(data, 4);
    tensor.v1.id = 50;
    setNumber(tensor.v1.memType, row.memory);
    setNumber(tensor.v1.dataType, row.type);
    setNumber(tensor.v1.quantizeParams.quantizationEncoding, row.encoding);
    setNumber(tensor.version, row.version);
    EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), row.code);
    EXPECT_EQ(tensor.v1.id, 50U);
    EXPECT_EQ(log.take(), row.messages);
    EXPECT_EQ(c.api.tensorCreateContextTensor(c.context, &tensor), 0U);
    EXPECT_EQ(tensor.v1.id, row.version == 3 ? 50U : next + 1);
    EXPECT_EQ(log.take(), row.messages);
    ++next;
  }
  EXPECT_EQ(c.newText() + c.newData(), "");

  // The ids are taken, by tensors that the recording does not hold.
  Kiv_Tensor_t tensor = emptyTensor();
  ASSERT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), 0U);
  EXPECT_EQ(tensor.v1.id, next + 1);
  c.newText();
  EXPECT_EQ(c.execute(c.graph, {tensorWithId(1), tensor}), 0U);
  EXPECT_EQ(idsIn(c.newText()), (Lines{"1", "g_tensor_7.v1.id"}));
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
  EXPECT_EQ(idsIn(c.newText()),
            (Lines{"0", "context_0_tensor_0.v1.id", "g_tensor_0.v1.id",
                   "inner_tensor_0.v1.id", "4", "5", "6"}));
  EXPECT_EQ(c.execute(c.graph, all), 0U);
  EXPECT_EQ(idsIn(c.newText()),
            (Lines{"0", "context_0_tensor_0.v1.id", "g_tensor_0.v1.id", "3",
                   "4", "5", "6"}));

  // The member is that of the referring record; validation refers to nothing.
  Kiv_Tensor_t second = tensorWithId(2, KIV_TENSOR_VERSION_2);
  Kiv_OpConfig_t op = emptyOpConfig("op");
  op.v1.numInputs = 1;
  op.v1.inputTensors = &second;
  EXPECT_EQ(c.api.graphAddNode(c.graph, op), 0U);
  EXPECT_EQ(idsIn(c.newText()), Lines{"g_tensor_0.v2.id"});
  EXPECT_EQ(c.api.backendValidateOpConfig(c.backend, op), 0U);
  EXPECT_EQ(idsIn(c.newText()), Lines{"2"});
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
  for (const char* number : {"0", "1"}) {
    EXPECT_EQ(c.execute(c.graph, {}, c.profile), 0U);
    EXPECT_TRUE(has(c.newText(), std::string("g_inputTensors_") + number +
                                     ", 0, g_outputTensors_" + number +
                                     ", 0, profile_0, NULL));"));
  }
}

}  // namespace
}  // namespace kiv::test
