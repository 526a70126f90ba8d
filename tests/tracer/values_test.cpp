#include <gtest/gtest.h>

#include <cstring>

#include "GPU/KivGpuGraph.h"
#include "support/records.h"
#include "tracer_run.h"

namespace kiv::test {
namespace {

// A number that no enum has, and that is not read as the enum therefore.
template <typename Enum>
void setUnknown(Enum& value) {
  std::memset(&value, 0xFF, sizeof value);
}

void expectPart(const std::string& line, const std::string& part) {
  EXPECT_NE(line.find(part), std::string::npos) << part << " in " << line;
}

// The lines of calls with one record. The golden session has the usual ones.
class TracerRecords : public testing::Test {
 protected:
  std::string lineOf(Kiv_Tensor_t tensor) {
    run_.api().tensorCreateContextTensor(nullptr, &tensor);
    return run_.lastLine();
  }

  std::string lineOf(const Kiv_OpConfig_t& config) {
    run_.api().graphAddNode(nullptr, config);
    return run_.lastLine();
  }

  std::string lineOf(Kiv_Param_t param) {
    Kiv_OpConfig_t config = emptyOpConfig(nullptr);
    config.v1.numParams = 1;
    config.v1.params = &param;
    return lineOf(config);
  }

  TracerRun run_;
};

TEST_F(TracerRecords, HashWholeElementsOfDataAndShowItsLength) {
  char bytes[] = "abcdefghij";
  // FNV-1a of "a", "abcd" and "abcdefgh".
  const std::string one = "af63dc4c8601ec8c";
  const std::string four = "fc179f83ee0724dd";
  const std::string eight = "25da8c1836a8d66d";
  const struct {
    Kiv_DataType_t type;
    uint32_t size;
    std::string text;
  } rows[] = {{KIV_DATA_TYPE_UINT_8, 1, "1:" + one},
              {KIV_DATA_TYPE_SFIXED_POINT_16, 5, "5:" + four},
              {KIV_DATA_TYPE_FLOAT_16, 6, "6:" + four},
              {KIV_DATA_TYPE_UINT_64, 10, "10:" + eight},
              {KIV_DATA_TYPE_UFIXED_POINT_4, 8, "8:" + eight}};
  for (const auto& row : rows) {
    expectPart(lineOf(tensorWithData(bytes, row.size, row.type)),
               "mem=0, data=" + row.text + "})");
  }
  // The size of no data says nothing.
  expectPart(lineOf(tensorWithData(nullptr, 12)), "mem=0, data=null})");

  Kiv_Tensor_t registered = emptyTensor();
  registered.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  run_.api().memRegister(nullptr, nullptr, 1, &registered.v1.memHandle);
  expectPart(lineOf(registered), "mem=1, handle=mem#0})");
}

// Bits tell a member of the wrong width or sign.
TEST_F(TracerRecords, TellScalarsApart) {
  constexpr uint64_t kOnes = ~uint64_t{0};
  const struct {
    Kiv_DataType_t type;
    uint64_t bits;
    std::string text;
  } rows[] = {
      {KIV_DATA_TYPE_INT_64, kOnes - 1, "100, value=-2"},
      {KIV_DATA_TYPE_UINT_64, kOnes, "356, value=18446744073709551615"},
      {KIV_DATA_TYPE_BOOL_8, 0x100, "1288, value=0"},
      {KIV_DATA_TYPE_BOOL_8, 2, "1288, value=1"},
      {KIV_DATA_TYPE_FLOAT_64, 0x3FB999999999999A,
       "612, value=0.10000000000000001"},
      {KIV_DATA_TYPE_FLOAT_32, 0x3DCCCCCD, "562, value=0.100000001"},
      {KIV_DATA_TYPE_FLOAT_32, 0x3DCCCCCE, "562, value=0.100000009"},
      {KIV_DATA_TYPE_FLOAT_16, 0x80000000, "534, value=-0"},
      {KIV_DATA_TYPE_FLOAT_32, 0xFF800000, "562, value=-inf"},
      {KIV_DATA_TYPE_FLOAT_32, 0xFFC00001, "562, value=nan"},
  };
  for (const auto& row : rows) {
    Kiv_Param_t param = {};
    param.scalarParam.dataType = row.type;
    param.scalarParam.uint64Value = row.bits;
    expectPart(lineOf(param), "scalar={type=" + row.text + "}");
  }
}

TEST_F(TracerRecords, KeepAnyTextOnOneLineOfAscii) {
  const std::pair<const char*, const char*> rows[] = {
      {"", R"("")"},
      {"a\"b\\c", R"("a\"b\\c")"},
      {"\n\r\t\x01\x7f", R"("\x0a\x0d\x09\x01\x7f")"},
      {"\xc3\xa9 ~", R"("\xc3\xa9 ~")"},
      {"([{=", R"("([{=")"}};
  for (const auto& [text, shown] : rows) {
    expectPart(lineOf(emptyOpConfig(text)),
               "name=" + std::string(shown) + ", package=null");
  }
}

TEST_F(TracerRecords, ShowNullArraysOnlyWhereThereIsACount) {
  uint32_t dims[] = {1};
  Kiv_Tensor_t tensor = emptyTensor(KIV_TENSOR_VERSION_2);
  tensor.v2.dimensions = dims;
  expectPart(lineOf(tensor), "rank=0, dims=[], mem=0, data=null, dynamic=[]");
  tensor.v2.rank = 1;
  tensor.v2.dimensions = nullptr;
  expectPart(lineOf(tensor),
             "rank=1, dims=null, mem=0, data=null, dynamic=null");
  Kiv_OpConfig_t config = emptyOpConfig("n");
  config.v1.numParams = config.v1.numInputs = config.v1.numOutputs = 1;
  expectPart(lineOf(config), "params=null, inputs=null, outputs=null}");
  const auto validate = run_.api().contextValidateBinary;
  validate(nullptr, nullptr, nullptr, nullptr, 1);
  expectPart(run_.lastLine(), "[], null, 1)");
  validate(nullptr, nullptr, nullptr, nullptr, 0);
  expectPart(run_.lastLine(), "[], 0:cbf29ce484222325, 0)");
}

// What is behind the pointer could be anything, unless it is told to be the GPU
// backend's.
TEST(TracerConfigs, ShowCustomRecordsOnRequestOnly) {
  KivGpuGraph_CustomConfig_t gpu = {KIV_GPU_PRECISION_FP16, 2, 3, 4};
  std::string shown = "<set>";
  const auto expectCustom = [&](const TracerRun& run, auto setConfig,
                                auto config) {
    config.customConfig = &gpu;
    const decltype(config)* list[] = {&config, nullptr};
    setConfig(nullptr, list);
    expectPart(run.lastLine(), "[{option=0, custom=" + shown + "}]");
  };
  {
    const TracerRun run;
    const auto& api = run.api();
    expectCustom(run, api.backendSetConfig, KivBackend_Config_t{});
    expectCustom(run, api.contextSetConfig, KivContext_Config_t{});
    expectCustom(run, api.deviceSetConfig, KivDevice_Config_t{});
    expectCustom(run, api.graphSetConfig, KivGraph_Config_t{});
    expectCustom(run, api.profileSetConfig, KivProfile_Config_t{});
  }
  const TracerRun run("KIV_TRACER_CUSTOM", "gpu");
  shown = "{precision=1, flag0=2, flag1=3, flag2=4}";
  expectCustom(run, run.api().graphSetConfig, KivGraph_Config_t{});
}

}  // namespace
}  // namespace kiv::test
