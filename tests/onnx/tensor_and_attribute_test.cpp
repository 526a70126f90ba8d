#include <gtest/gtest.h>

#include "attributes.h"
#include "tensor_data.h"
#include "texts.h"

namespace onnx_client {
namespace {

onnx::TensorProto tensorProto(const std::string& text) {
  onnx::TensorProto proto;
  merge(text, proto);
  return proto;
}

// What is read, and what comes of it.
using Row = std::pair<const char*, const char*>;

TEST(TensorData, ReadsEveryTypeFromFieldsAndFromRawBytes) {
  const Row rows[] = {
      {"data_type: 1 float_data: 1.5 float_data: -2",
       "232[2] 0000c03f000000c0"},
      {"data_type: 11 double_data: 0.1 double_data: -2",
       "264[2] 9a9999999999b93f00000000000000c0"},
      {"data_type: 10 int32_data: 0x3C00 int32_data: 0xBC00",
       "216[2] 003c00bc"},
      {"data_type: 3 int32_data: -128 int32_data: 127", "8[2] 807f"},
      {"data_type: 2 int32_data: 255 int32_data: 1", "108[2] ff01"},
      {"data_type: 5 int32_data: -32768 int32_data: 2", "16[2] 00800200"},
      {"data_type: 4 int32_data: 65535 int32_data: 2", "116[2] ffff0200"},
      {"data_type: 6 int32_data: -2147483648 int32_data: 3",
       "32[2] 0000008003000000"},
      {"data_type: 12 uint64_data: 4294967295 uint64_data: 3",
       "132[2] ffffffff03000000"},
      {"data_type: 7 int64_data: -2 int64_data: 5",
       "64[2] feffffffffffffff0500000000000000"},
      {"data_type: 13 uint64_data: 0xFFFFFFFFFFFFFFFF uint64_data: 5",
       "164[2] ffffffffffffffff0500000000000000"},
      {"data_type: 9 int32_data: 1 int32_data: 0", "508[2] 0100"},
  };
  for (const auto& [text, read] : rows) {
    const auto fields = tensorProto("dims: 2 " + std::string(text));
    const Tensor tensor = readTensor(fields, "w");
    EXPECT_EQ(textOf(tensor), "w " + std::string(read)) << text;
    onnx::TensorProto raw = tensorProto("dims: 1 dims: 2");
    raw.set_data_type(fields.data_type());
    raw.set_raw_data(tensor.data.data(), tensor.data.size());
    EXPECT_EQ(readTensor(raw, "w").data, tensor.data) << text;
  }
}

TEST(TensorData, RefusesWhatDoesNotFit) {
  const std::string size = "tensor w has more or less data than its shape";
  const std::string large = "not accepted: tensor w is larger than 4 GiB";
  const std::pair<const char*, std::string> rows[] = {
      {"data_type: 1 dims: 2 raw_data: '1234567'", size},
      {"data_type: 7 dims: 1 int64_data: 1 int64_data: 2", size},
      {"data_type: 1 dims: -1", "not accepted: tensor w has a dimension of -1"},
      {"data_type: 1 dims: 4294967296",
       "not accepted: tensor w has a dimension of 4294967296"},
      {"data_type: 2 dims: 4294967295", size},
      {"data_type: 1 dims: 1073741824", large},
      {"data_type: 1 dims: 4294967295 dims: 4294967295 dims: 4294967295",
       large},
      {"data_type: 8 dims: 0",
       "not accepted: tensor w has elements of type STRING, which no tensor of "
       "the Kiv API can have"},
      {"data_type: 1 dims: 1 data_location: EXTERNAL",
       "not accepted: tensor w keeps its data in another file"},
      {"data_type: 2 dims: 4294967295 dims: 4294967295 dims: 0", ""}};
  for (const auto& [text, error] : rows) {
    const onnx::TensorProto tensor = tensorProto(text);
    EXPECT_EQ(errorOf([&] { readTensor(tensor, "w"); }), error) << text;
  }
}

// What a node "n" has for parameters, each on a line.
std::string readAttribute(const std::string& text) {
  onnx::NodeProto node;
  merge("attribute { " + text + " }", node);
  std::string read;
  const auto readGraph = [](const onnx::GraphProto& graph,
                            const std::string& parameter) {
    auto made = std::make_unique<Graph>();
    made->name = parameter + ":" + graph.name();
    return made;
  };
  for (const Parameter& parameter : readAttributes(node, "n", readGraph)) {
    read += textOf(parameter) + "\n";
  }
  return read;
}

TEST(Attributes, BecomeParameters) {
  const Row rows[] = {
      {"name: 'a' type: FLOAT f: 0.5", "a=0.500000\n"},
      {"name: 'a' type: INT i: -3", "a=-3\n"},
      {"name: 'a' type: STRING s: 'a/b'", "a=\"a/b\"\n"},
      // No scalar holds these: 64 bits, and a text with a NUL.
      {"name: 'a' type: INT i: 2147483647", "a=2147483647\n"},
      {"name: 'a' type: INT i: 2147483648", "a=n_a 64[1] 0000008000000000\n"},
      {"name: 'a' type: INT i: -2147483649", "a=n_a 64[1] ffffff7fffffffff\n"},
      {"name: 'a' type: STRING s: 'a\\000b'", "a=n_a 108[3] 610062\n"},
      {"name: 'a' type: INTS ints: 1 ints: -1",
       "a=n_a 64[2] 0100000000000000ffffffffffffffff\n"},
      {"name: 'a' type: STRINGS strings: 'x' strings: 'y'",
       "a_0=\"x\"\na_1=\"y\"\n"},
      {"name: 'a' type: TENSOR t { data_type: 2 int32_data: 7 }",
       "a=n_a 108[] 07\n"},
      {"name: 'a' type: GRAPH g { name: 'loop' }", "a=a:loop\n"},
      // Early files tell the type by the field that is there.
      {"name: 'a' i: 2", "a=2\n"}};
  for (const auto& [text, read] : rows) {
    EXPECT_EQ(readAttribute(text), read) << text;
  }
  EXPECT_EQ(errorOf([] { readAttribute("name: 'a' type: SPARSE_TENSOR"); }),
            "not accepted: attribute a is of a kind without a match");
  EXPECT_EQ(errorOf([] { readAttribute("name: 'a' ref_attr_name: 'b'"); }),
            "not accepted: attribute a refers to a function's");
}

}  // namespace
}  // namespace onnx_client
