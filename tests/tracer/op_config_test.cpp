#include <gtest/gtest.h>

#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

class OpConfigTest : public testing::Test {
 protected:
  std::string traceOf(const Kiv_OpConfigV1_t& v1) {
    Kiv_OpConfig_t config = {};
    config.version = KIV_OP_CONFIG_VERSION_1;
    config.v1 = v1;
    EXPECT_EQ(run_.api().graphAddNode(nullptr, config), 0u);
    return run_.lastLine();
  }

  std::string traceOf(Kiv_Param_t param) {
    Kiv_OpConfigV1_t config = {};
    config.numParams = 1;
    config.params = &param;
    const std::string line = traceOf(config);
    const auto begin = line.find("params=[") + sizeof "params=[" - 1;
    return line.substr(begin, line.find("], inputs=") - begin);
  }

  std::string traceOf(const Kiv_Scalar_t& scalar) {
    Kiv_Param_t param = {};
    param.paramType = KIV_PARAM_TYPE_SCALAR;
    param.scalarParam = scalar;
    return traceOf(param);
  }

  TracerRun run_;
};

std::string scalarText(int type, const std::string& value) {
  return "{type=0, name=null, scalar={type=" + std::to_string(type) +
         ", value=" + value + "}}";
}

TEST_F(OpConfigTest, ShowsNamesParametersAndTensors) {
  Kiv_Param_t params[2] = {};
  params[0].name = "axis";
  params[0].scalarParam = {KIV_DATA_TYPE_INT_32, {.int32Value = -1}};
  params[1].paramType = KIV_PARAM_TYPE_TENSOR;
  params[1].name = "shape";
  params[1].tensorParam.version = KIV_TENSOR_VERSION_UNDEFINED;
  Kiv_Tensor_t tensors[2] = {};
  tensors[1].version = static_cast<Kiv_TensorVersion_t>(5);
  EXPECT_EQ(
      traceOf({"n", "p", "Conv", 2, params, 1, tensors, 1, tensors + 1}),
      "graphAddNode(null, {version=1, name=\"n\", package=\"p\", "
      "type=\"Conv\", params=[{type=0, name=\"axis\", scalar={type=50, "
      "value=-1}}, {type=1, name=\"shape\", tensor={version=2147483647}}], "
      "inputs=[{version=0}], outputs=[{version=5}]})");
}

TEST_F(OpConfigTest, ShowsEmptyAndMissingArrays) {
  Kiv_Param_t param = {};
  const std::string nothing =
      "graphAddNode(null, {version=1, name=null, package=null, type=null, "
      "params=[], inputs=[], outputs=[]})";
  EXPECT_EQ(traceOf(Kiv_OpConfigV1_t{}), nothing);
  EXPECT_EQ(
      traceOf({nullptr, nullptr, nullptr, 0, &param, 0, nullptr, 0, nullptr}),
      nothing);
  EXPECT_EQ(
      traceOf({nullptr, nullptr, nullptr, 3, nullptr, 1, nullptr, 1, nullptr}),
      "graphAddNode(null, {version=1, name=null, package=null, "
      "type=null, params=null, inputs=null, outputs=null})");
}

TEST_F(OpConfigTest, ShowsNothingBelowUnknownVersionsAndKinds) {
  Kiv_OpConfig_t config = {};
  config.version = static_cast<Kiv_OpConfigVersion_t>(2);
  EXPECT_EQ(run_.api().backendValidateOpConfig(nullptr, config), 0u);
  EXPECT_EQ(run_.lastLine(), "backendValidateOpConfig(null, {version=2})");
  Kiv_Param_t param = {};
  param.paramType = static_cast<Kiv_ParamType_t>(2);
  EXPECT_EQ(traceOf(param), "{type=2, name=null}");
}

TEST_F(OpConfigTest, ShowsTheMemberThatTheScalarsTypeSelects) {
  // All members at once: a wrong width or sign shows another number.
  const Kiv_Scalar_t ones = {{}, {.uint64Value = ~0ull}};
  const auto trace = [&](Kiv_DataType_t type) {
    Kiv_Scalar_t scalar = ones;
    scalar.dataType = type;
    return traceOf(scalar);
  };
  EXPECT_EQ(trace(KIV_DATA_TYPE_INT_8), scalarText(0x8, "-1"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_INT_16), scalarText(0x16, "-1"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_INT_64), scalarText(0x64, "-1"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_UINT_8), scalarText(0x108, "255"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_UINT_16), scalarText(0x116, "65535"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_UINT_32), scalarText(0x132, "4294967295"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_UINT_64),
            scalarText(0x164, "18446744073709551615"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_FLOAT_16), scalarText(0x216, "nan"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_BOOL_8), scalarText(0x508, "1"));
  EXPECT_EQ(trace(KIV_DATA_TYPE_UFIXED_POINT_8), scalarText(0x408, "?"));
  EXPECT_EQ(traceOf({KIV_DATA_TYPE_BOOL_8, {.bool8Value = 0}}),
            scalarText(0x508, "0"));
  EXPECT_EQ(traceOf({KIV_DATA_TYPE_FLOAT_64, {.doubleValue = 0.1}}),
            scalarText(0x264, "0.10000000000000001"));
  EXPECT_EQ(traceOf({KIV_DATA_TYPE_STRING, {.stringValue = nullptr}}),
            scalarText(0x608, "null"));
}

TEST_F(OpConfigTest, KeepsAnyStringOnOneLineOfAscii) {
  const auto trace = [&](const char* text) {
    Kiv_OpConfigV1_t config = {};
    config.name = text;
    const std::string line = traceOf(config);
    const auto begin = line.find("name=") + sizeof "name=" - 1;
    return line.substr(begin, line.find(", package") - begin);
  };
  EXPECT_EQ(trace(""), R"("")");
  EXPECT_EQ(trace("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(trace("\n\r\t\x01\x7f"), R"("\x0a\x0d\x09\x01\x7f")");
  EXPECT_EQ(trace("\xc3\xa9 ~"), R"("\xc3\xa9 ~")");
  // Text that looks like the trace's own marks is still one item.
  EXPECT_EQ(trace("([{="), R"("([{=")");
  EXPECT_EQ(run_.lines().size(), 5u);
}

}  // namespace
}  // namespace kiv::tracer::test
