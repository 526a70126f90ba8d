#include "writers/op_config_writer.h"

#include "support/records.h"
#include "writer_test.h"
#include "writers/scalar_writer.h"

namespace kiv::writers::test {
namespace {

using kiv::test::emptyOpConfig;

using OpConfigWriterTest = WriterTest;

TEST_F(OpConfigWriterTest, TellsWhatItRefuses) {
  Kiv_Param_t bad{};
  setNumber(bad.paramType, 2);
  const struct {
    std::uint32_t version;
    Kiv_Param_t* params;
    const char* name;
    Status status;
    std::string message;
  } cases[] = {{2, &bad, "opConfig_", Status::kNotSupported,
                "1: Unsupported opconfig version: 2.\n"},
               {1, &bad, "op_", Status::kBackendInvalidArgument,
                "1: Invalid Kiv_ParamType_t provided: 2\n"},
               {1, nullptr, "op_", Status::kBackendInvalidArgument,
                "1: An op config counts 1 elements but their array is NULL"}};
  for (const auto& c : cases) {
    Kiv_OpConfig_t opConfig = emptyOpConfig("op");
    setNumber(opConfig.version, c.version);
    opConfig.v1.numParams = 1;
    opConfig.v1.params = c.params;
    WriteScope s = scope();
    EXPECT_TRUE(nameOpConfig(s, opConfig).starts_with(c.name));
    EXPECT_EQ(writeOpConfig(s, opConfig, "op", nullptr), c.status);
    EXPECT_EQ(messages(), Lines{c.message});
    EXPECT_EQ(statements(), "\n");
  }
}

// The golden recording has a scalar of each type.
TEST_F(OpConfigWriterTest, ScalarsAreWrittenOrRefusedByTheirType) {
  Kiv_Scalar_t ones{};
  std::memset(&ones, 0xFF, sizeof(ones));
  const std::pair<std::uint32_t, std::string> cases[] = {
      {0x0008, ".int8Value = -1"},
      {0x0032, ".int32Value = -1"},
      {0x0508, ".bool8Value = 1"}};
  WriteScope s = scope();
  for (const auto& [type, member] : cases) {
    setNumber(ones.dataType, type);
    EXPECT_EQ(writeScalar(s, ones, "v"), Status::kOk);
    EXPECT_EQ(statements(), "\nKiv_Scalar_t v = {(Kiv_DataType_t)" +
                                std::to_string(type) + ", " + member + "};\n");
  }
  for (const std::uint32_t type :
       {0x0064u, 0x0164u, 0x0264u, 0x0304u, 0x0308u, 0x0316u, 0x0332u, 0x0404u,
        0x0408u, 0x0416u, 0x0432u, 0u, 0x7FFFFFFFu}) {
    setNumber(ones.dataType, type);
    EXPECT_EQ(writeScalar(s, ones, "v"), Status::kBackendInvalidArgument);
    EXPECT_EQ(messages(), Lines{"1: Invalid Kiv_DataType_t provided: " +
                                std::to_string(type)});
    EXPECT_EQ(statements(), "\n");
  }
}

}  // namespace
}  // namespace kiv::writers::test
