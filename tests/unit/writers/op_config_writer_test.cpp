#include "writers/op_config_writer.h"

#include <regex>

#include "support/records.h"
#include "writer_test.h"
#include "writers/scalar_writer.h"

namespace kiv::writers::test {
namespace {

using kiv::test::emptyOpConfig;
using kiv::test::emptyTensor;

class OpConfigWriterTest : public WriterTest {
 protected:
  Status write(const Kiv_OpConfig_t& opConfig,
               const session::TensorRegistry* created = nullptr) {
    WriteScope s = scope();
    return writeOpConfig(s, opConfig, "op", created);
  }
};

TEST_F(OpConfigWriterTest, WithoutAnythingItStillDeclaresItAll) {
  EXPECT_EQ(write(emptyOpConfig(nullptr)), Status::kOk);
  EXPECT_EQ(statements(), R"(
Kiv_Param_t* op_params = NULL;
Kiv_Tensor_t* op_inputs = NULL;
Kiv_Tensor_t* op_outputs = NULL;
Kiv_OpConfigV1_t op_v1 = {NULL, NULL, NULL, 0, op_params, 0, op_inputs, 0, op_outputs};
Kiv_OpConfig_t op = {(Kiv_OpConfigVersion_t)1, .v1 = op_v1};
)");
}

TEST_F(OpConfigWriterTest, WritesParametersInputsAndOutputsInOrder) {
  Kiv_Param_t params[2] = {};
  params[0].name = "axis";
  params[0].scalarParam.dataType = KIV_DATA_TYPE_INT_32;
  params[0].scalarParam.int32Value = -1;
  params[1].paramType = KIV_PARAM_TYPE_TENSOR;
  params[1].tensorParam = emptyTensor();
  Kiv_Tensor_t inputs[2] = {emptyTensor(), emptyTensor(KIV_TENSOR_VERSION_2)};
  inputs[0].v1.id = 5;
  Kiv_Tensor_t output = emptyTensor();
  Kiv_OpConfig_t opConfig = emptyOpConfig(nullptr);
  opConfig.v1 = {"conv \"1\"", "pkg", "", 2, params, 2, inputs, 1, &output};
  session::TensorRegistry created("g", nullptr);
  created.add(5, "x", std::make_shared<session::Variable>("g_tensor_0", 0));
  EXPECT_EQ(write(opConfig, &created), Status::kOk);
  // The tensors' parts have a test of their own.
  std::string text = statements();
  text = std::regex_replace(
      text, std::regex("Kiv_(QuantizeParams|ClientBuffer)_t .*\n"), "");
  text = std::regex_replace(text, std::regex(", NULL, \\(Kiv_TensorT.*"), "");
  EXPECT_EQ(text, R"(
Kiv_Scalar_t op_param_0_scalar = {(Kiv_DataType_t)50, .int32Value = -1};
Kiv_Param_t op_param_0 = {(Kiv_ParamType_t)0, "axis", .scalarParam = op_param_0_scalar};
Kiv_TensorV1_t op_param_1_tensor_v1 = {0
Kiv_Tensor_t op_param_1_tensor = {(Kiv_TensorVersion_t)1, .v1 = op_param_1_tensor_v1};
Kiv_Param_t op_param_1 = {(Kiv_ParamType_t)1, NULL, .tensorParam = op_param_1_tensor};
Kiv_Param_t op_params[] = {op_param_0, op_param_1};
Kiv_TensorV1_t op_input_0_v1 = {g_tensor_0.v1.id
Kiv_Tensor_t op_input_0 = {(Kiv_TensorVersion_t)1, .v1 = op_input_0_v1};
Kiv_TensorV2_t op_input_1_v2 = {0
Kiv_Tensor_t op_input_1 = {(Kiv_TensorVersion_t)2, .v2 = op_input_1_v2};
Kiv_Tensor_t op_inputs[] = {op_input_0, op_input_1};
Kiv_TensorV1_t op_output_0_v1 = {0
Kiv_Tensor_t op_output_0 = {(Kiv_TensorVersion_t)1, .v1 = op_output_0_v1};
Kiv_Tensor_t op_outputs[] = {op_output_0};
Kiv_OpConfigV1_t op_v1 = {"conv "1"", "pkg", "", 2, op_params, 2, op_inputs, 1, op_outputs};
Kiv_OpConfig_t op = {(Kiv_OpConfigVersion_t)1, .v1 = op_v1};
)");
}

TEST_F(OpConfigWriterTest, EndsWithTheFirstFailure) {
  Kiv_Param_t badType{};
  setNumber(badType.paramType, 2);
  Kiv_Param_t badScalar{};
  badScalar.scalarParam.dataType = KIV_DATA_TYPE_INT_64;
  Kiv_Tensor_t badTensor = emptyTensor();
  setNumber(badTensor.v1.memType, 1);
  const std::string counted =
      "1: An op config counts 1 elements but their array is NULL";
  const std::string memory =
      "1: Failed to parse Kiv_Tensor_t, MemHandle is not supported.";
  const struct {
    std::uint32_t version;
    Kiv_OpConfigV1_t v1;
    std::uint32_t code;
    std::string message;
  } cases[] = {
      {2, {}, 1000, "1: Unsupported opconfig version: 2.\n"},
      {1,
       {{}, {}, {}, 1, &badType, {}, {}, {}, {}},
       4004,
       "1: Invalid Kiv_ParamType_t provided: 2\n"},
      {1,
       {{}, {}, {}, 1, &badScalar, {}, {}, {}, {}},
       4004,
       "1: Invalid Kiv_DataType_t provided: 100"},
      {1, {{}, {}, {}, {}, {}, 1, &badTensor, {}, {}}, 6004, memory},
      {1, {{}, {}, {}, {}, {}, {}, {}, 1, &badTensor}, 6004, memory},
      {1, {{}, {}, {}, 1, {}, {}, {}, {}, {}}, 4004, counted},
      {1, {{}, {}, {}, {}, {}, 1, {}, {}, {}}, 4004, counted},
      {1, {{}, {}, {}, {}, {}, {}, {}, 1, {}}, 4004, counted},
  };
  for (const auto& c : cases) {
    Kiv_OpConfig_t opConfig{};
    setNumber(opConfig.version, c.version);
    opConfig.v1 = c.v1;
    EXPECT_EQ(static_cast<std::uint32_t>(write(opConfig)), c.code);
    EXPECT_EQ(messages(), Lines{c.message});
    const std::string text = statements();
    EXPECT_EQ(text.find("Kiv_OpConfig"), std::string::npos);
    EXPECT_TRUE(c.version == 1 || text == "\n");
  }
}

TEST_F(OpConfigWriterTest, VariablesAreNumberedByIdentifier) {
  WriteScope s = scope();
  Kiv_OpConfig_t unknown = emptyOpConfig("conv");
  setNumber(unknown.version, 2);
  EXPECT_EQ(nameOpConfig(s, emptyOpConfig("a b")), "a_b_0");
  EXPECT_EQ(nameOpConfig(s, emptyOpConfig("a/b")), "a_b_1");
  EXPECT_EQ(nameOpConfig(s, emptyOpConfig(nullptr)), "opConfig_0");
  EXPECT_EQ(nameOpConfig(s, unknown), "opConfig_1");
  EXPECT_EQ(nameOpConfig(s, emptyOpConfig("()")), "opConfig_2");
  EXPECT_EQ(nameOpConfig(s, emptyOpConfig("1x1")), "_1x1_0");
}

TEST_F(OpConfigWriterTest, ScalarsAreWrittenByTheirType) {
  Kiv_Scalar_t ones{};
  std::memset(&ones, 0xFF, sizeof(ones));
  Kiv_Scalar_t number{};
  number.floatValue = 0.1F;
  Kiv_Scalar_t text{};
  text.stringValue = "a\"b";
  const Kiv_Scalar_t null{};
  const std::tuple<std::uint32_t, Kiv_Scalar_t, std::string> cases[] = {
      {0x0008, ones, ".int8Value = -1"},
      {0x0016, ones, ".int16Value = -1"},
      {0x0032, ones, ".int32Value = -1"},
      {0x0108, ones, ".uint8Value = 255"},
      {0x0116, ones, ".uint16Value = 65535"},
      {0x0132, ones, ".uint32Value = 4294967295"},
      {0x0216, number, ".floatValue = 0.100000001"},
      {0x0232, number, ".floatValue = 0.100000001"},
      {0x0508, ones, ".bool8Value = 1"},
      {0x0508, null, ".bool8Value = 0"},
      {0x0608, text, ".stringValue = \"a\"b\""},
      {0x0608, null, ".stringValue = NULL"}};
  WriteScope s = scope();
  for (auto [type, scalar, member] : cases) {
    setNumber(scalar.dataType, type);
    EXPECT_EQ(writeScalar(s, scalar, "v"), Status::kOk);
    EXPECT_EQ(statements(), "\nKiv_Scalar_t v = {(Kiv_DataType_t)" +
                                std::to_string(type) + ", " + member + "};\n");
  }
  messages();
  for (const std::uint32_t type :
       {0x0064u, 0x0164u, 0x0264u, 0x0304u, 0x0308u, 0x0316u, 0x0332u, 0x0404u,
        0x0408u, 0x0416u, 0x0432u, 0u, 0x7FFFFFFFu}) {
    Kiv_Scalar_t scalar{};
    setNumber(scalar.dataType, type);
    EXPECT_EQ(writeScalar(s, scalar, "v"), Status::kBackendInvalidArgument);
    EXPECT_EQ(messages(), Lines{"1: Invalid Kiv_DataType_t provided: " +
                                std::to_string(type)});
    EXPECT_EQ(statements(), "\n");
  }
}

}  // namespace
}  // namespace kiv::writers::test
