#include "arrays/npy.h"

#include <gtest/gtest.h>

#include "arrays/arrays.h"
#include "support/files.h"

namespace kiv::test {
namespace {

using namespace arrays;
using namespace std::string_literals;

// What NumPy's save() writes for arange(6, dtype=int16).reshape(2, 3).
const std::string kByNumpy =
    "\x93NUMPY\x01\x00\x76\x00{'descr': '<i2', 'fortran_order': False, "
    "'shape': (2, 3), }                                                    "
    "      \n\0\0\1\0\2\0\3\0\4\0\5\0"s;

std::string fileOf(const std::string& dictionary, const std::string& data,
                   char version = 1) {
  std::string file = "\x93NUMPY"s + version + '\0';
  file += static_cast<char>(dictionary.size());
  file += version == 1 ? "\0"s : "\0\0\0"s;
  return file + dictionary + data;
}

std::optional<Array> parse(const std::string& file, std::string& why) {
  return parseNpy(bytesOf(file), why);
}

TEST(Npy, TheBytesAreNumpys) {
  const Array array =
      arrayOf<std::int16_t>({'i', 2}, {2, 3}, {0, 1, 2, 3, 4, 5});
  std::string why;
  const TempDirectory directory;
  ASSERT_TRUE(writeNpy(directory.path() / "a.npy", array.view(), why)) << why;
  EXPECT_EQ(readFile(directory.path() / "a.npy"), kByNumpy);
  EXPECT_TRUE(npyHeader({'f', 4}, {}).find("'shape': (), ") !=
              std::string::npos);
  EXPECT_TRUE(npyHeader({'V', 1}, {7})
                  .find("'|V1', 'fortran_order': False, "
                        "'shape': (7,), ") != std::string::npos);
}

TEST(Npy, EveryElementTypeComesBack) {
  const TempDirectory directory;
  for (const Kiv_DataType_t type :
       {KIV_DATA_TYPE_INT_8, KIV_DATA_TYPE_UINT_64, KIV_DATA_TYPE_FLOAT_16,
        KIV_DATA_TYPE_FLOAT_64, KIV_DATA_TYPE_SFIXED_POINT_4,
        KIV_DATA_TYPE_UFIXED_POINT_16, KIV_DATA_TYPE_BOOL_8}) {
    const Element element = *elementOf(type);
    Array array{element, {0, 3}, {}};
    for (std::uint64_t rows : {0U, 2U}) {
      array.shape[0] = rows;
      array.data.assign(rows * 3 * element.size, std::byte{1});
      std::string why;
      ASSERT_TRUE(writeNpy(directory.path() / "a.npy", array.view(), why));
      const auto read = readNpy(directory.path() / "a.npy", why);
      ASSERT_TRUE(read) << toString(element) << ": " << why;
      EXPECT_TRUE(fits(read->element, type));
      EXPECT_EQ(read->shape, array.shape);
      EXPECT_EQ(read->data, array.data);
    }
  }
  EXPECT_FALSE(elementOf(KIV_DATA_TYPE_STRING));
}

TEST(Npy, OtherOrdersAndVersionsAreRead) {
  std::string why;
  // 1 2 3 / 4 5 6, big-endian, the first dimension varying fastest.
  const auto fortran =
      parse(fileOf("{\"shape\":(2L,3L),'fortran_order':True,'descr':'>u2'}",
                   "\0\1\0\4\0\2\0\5\0\3\0\6"s, 2),
            why);
  ASSERT_TRUE(fortran) << why;
  EXPECT_EQ(fortran->data, bytesOf("\1\0\2\0\3\0\4\0\5\0\6\0"s));
  const auto scalar = parse(
      fileOf("{'descr': '|b1', 'fortran_order': True, 'shape': ()}", "\1", 3),
      why);
  ASSERT_TRUE(scalar) << why;
  EXPECT_EQ(scalar->view().count(), 1U);
}

TEST(Npy, OtherFilesAreRefused) {
  const auto refusal = [](const std::string& file) {
    std::string why;
    EXPECT_FALSE(parse(file, why));
    return why;
  };
  for (std::size_t size = 0; size < kByNumpy.size(); ++size)
    EXPECT_NE(refusal(kByNumpy.substr(0, size)), "") << size;
  const std::string shape = "'fortran_order': False, 'shape': (1,)}";
  for (const std::string type :
       {"<c8", "|O", "<U3", "<f3", "f4", "<i", "<M8[ns]", "|V3"})
    EXPECT_NE(refusal(fileOf("{'descr': '" + type + "', " + shape, "12345678"))
                  .find(type),
              std::string::npos)
        << type;
  EXPECT_NE(refusal(fileOf("{'descr': [('a', '<f4')], " + shape, "1234")), "");
  EXPECT_NE(refusal(fileOf("{'descr': '<f8', 'fortran_order': False, 'shape': "
                           "(4294967296, 4294967296, 4)}",
                           "")),
            "");
  EXPECT_NE(refusal(fileOf("{'descr': '<f8', 'fortran_order': False, 'shape': "
                           "(2305843009213693952,)}",
                           "")),
            "");
  EXPECT_NE(refusal(fileOf("{'descr': '<f4'}", "1234")), "");
  std::string why;
  EXPECT_FALSE(readNpy("no/such.npy", why));
  EXPECT_NE(why, "");
}

TEST(Arrays, ATensorsBufferDecides) {
  std::uint32_t dimensions[] = {2, 2};
  float data[4] = {1, 2, 3, 4};
  Kiv_Tensor_t tensor{};
  tensor.version = KIV_TENSOR_VERSION_1;
  tensor.v1.dataType = KIV_DATA_TYPE_FLOAT_32;
  tensor.v1.rank = 2;
  tensor.v1.dimensions = dimensions;
  std::string why;
  EXPECT_FALSE(viewOf(tensor, why));
  tensor.v1.clientBuf = {data, sizeof data};
  EXPECT_EQ(viewOf(tensor, why)->shape, (Shape{2, 2}));
  tensor.v1.clientBuf.dataSize = 13;
  EXPECT_EQ(viewOf(tensor, why)->shape, (Shape{3}));
  dimensions[0] = 0;
  tensor.v1.clientBuf = {nullptr, 0};
  EXPECT_EQ(viewOf(tensor, why)->shape, (Shape{0, 2}));
  tensor.v1.dataType = KIV_DATA_TYPE_UNDEFINED;
  EXPECT_FALSE(viewOf(tensor, why));
}

}  // namespace
}  // namespace kiv::test
