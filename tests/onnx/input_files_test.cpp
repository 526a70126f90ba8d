#include "input_files.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <cstdio>
#include <cstring>

#include "arrays/npy.h"
#include "external_data.h"
#include "files.h"
#include "support/files.h"
#include "texts.h"

namespace onnx_client {
namespace {

class InputFiles : public testing::Test {
 protected:
  std::string path(const char* name) const { return directory_.path() / name; }

  // Two pixels, red and half transparent black, as a person would draw them.
  std::string png() const {
    const std::uint8_t pixels[] = {255, 0, 0, 255, 0, 0, 0, 0};
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 2;
    image.height = 1;
    image.format = PNG_FORMAT_RGBA;
    png_image_write_to_file(&image, path("two.png").c_str(), 0, pixels, 0,
                            nullptr);
    return path("two.png");
  }

  // Grey in one colour.
  std::string jpeg() const {
    std::FILE* const file = std::fopen(path("grey.JPG").c_str(), "wb");
    jpeg_error_mgr errors;
    jpeg_compress_struct jpeg;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = jpeg.image_height = 8;
    jpeg.input_components = 1;
    jpeg.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    std::uint8_t line[8];
    std::memset(line, 100, sizeof line);
    JSAMPROW row = line;
    while (jpeg.next_scanline < 8) jpeg_write_scanlines(&jpeg, &row, 1);
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
    return path("grey.JPG");
  }

  static Tensor input(std::vector<std::uint32_t> sizes,
                      Kiv_DataType_t type = KIV_DATA_TYPE_FLOAT_32) {
    Tensor tensor;
    tensor.name = "x";
    tensor.dataType = type;
    tensor.shape = {true, std::move(sizes), {}};
    return tensor;
  }

  static std::vector<float> floats(const std::vector<std::uint8_t>& bytes) {
    std::vector<float> values(bytes.size() / sizeof(float));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
  }

  kiv::test::TempDirectory directory_;
};

TEST_F(InputFiles, BelongToTheInputsThatTheyName) {
  const std::vector<std::string> inputs = {"a", "b=c", "d"};
  const auto files = assignFiles({"one", "b=c=x=y", "no=input"}, inputs);
  EXPECT_EQ(files.at(0), "one");
  EXPECT_EQ(files.at(1), "x=y");
  EXPECT_EQ(files.at(2), "no=input");
  EXPECT_NE(errorOf([&] { assignFiles({"a=1", "a=2"}, inputs); }), "");
  EXPECT_NE(errorOf([&] { assignFiles({"1", "2", "3", "4"}, inputs); }), "");
}

TEST_F(InputFiles, PicturesBecomePlanesOrPixels) {
  const std::string file = png();
  EXPECT_EQ(floats(readInputFile(file, input({1, 3, 1, 2}), {})),
            (std::vector<float>{1, 1, 0, 1, 0, 1}));
  ImageOptions options;
  options.layout = Layout::kNhwc;
  EXPECT_EQ(
      readInputFile(file, input({1, 1, 2, 3}, KIV_DATA_TYPE_UINT_8), options),
      (std::vector<std::uint8_t>{255, 0, 0, 255, 255, 255}));
  // Between the two pixels lies their middle, beyond them their own colour.
  EXPECT_EQ(readInputFile(file, input({1, 1, 4, 3}, KIV_DATA_TYPE_UINT_8),
                          options)[4],
            64);
  EXPECT_EQ(readInputFile(file, input({1, 1, 1, 3}, KIV_DATA_TYPE_UINT_8),
                          options)[1],
            128);
}

TEST_F(InputFiles, PicturesAreNormalised) {
  ImageOptions options;
  options.mean = {0.5, 0, 1};
  options.std = {0.5, 2, 4};
  EXPECT_EQ(floats(readInputFile(png(), input({1, 3, 1, 2}), options)),
            (std::vector<float>{1, 1, 0, 0.5, -0.25, 0}));
  options.mean = {1};
  options.std = {};
  const auto grey = floats(readInputFile(jpeg(), input({1, 1, 2, 2}), options));
  ASSERT_EQ(grey.size(), 4U);
  EXPECT_NEAR(grey[3], 100 / 255.0 - 1, 0.01);
  options.mean = {1, 2};
  EXPECT_NE(errorOf([&] {
              readInputFile(png(), input({1, 3, 1, 2}), options);
            }).find("--mean"),
            std::string::npos);
}

TEST_F(InputFiles, WhatDoesNotFitIsRefused) {
  const auto refusal = [](const std::string& file, const Tensor& tensor) {
    return errorOf([&] { readInputFile(file, tensor, {}); });
  };
  EXPECT_NE(refusal(png(), input({1, 4, 1, 2})), "");
  EXPECT_NE(refusal(png(), input({3, 1, 2})), "");
  EXPECT_NE(refusal(png(), input({1, 3, 1, 2}, KIV_DATA_TYPE_INT_64)), "");
  for (const std::string& file : {png(), jpeg()}) {
    const std::string bytes = readFile(file);
    for (const std::size_t size : {std::size_t{0}, std::size_t{20}}) {
      writeFile(file,
                {reinterpret_cast<const std::uint8_t*>(bytes.data()), size});
      EXPECT_NE(refusal(file, input({1, 3, 1, 2})), "") << file << size;
    }
  }
  const std::byte data[8] = {};
  std::string why;
  kiv::arrays::writeNpy(path("a.npy"), {{'f', 4}, {1, 2}, data}, why);
  EXPECT_EQ(refusal(path("a.npy"), input({1, 2})), "");
  EXPECT_NE(refusal(path("a.npy"), input({2, 1})).find("--shape"),
            std::string::npos);
  EXPECT_NE(refusal(path("a.npy"), input({1, 2}, KIV_DATA_TYPE_INT_32))
                .find("float32"),
            std::string::npos);
}

TEST_F(InputFiles, DataBesideTheNetworkIsReadAndNoOther) {
  const std::uint8_t data[] = {9, 9, 0, 0, 128, 63};
  writeFile(path("data.bin"), data);
  const auto read = [&](const std::string& location, const char* offset) {
    onnx::ModelProto model;
    merge(
        "initializer { name: 'w' data_type: 1 dims: 1 data_location: EXTERNAL"
        " external_data { key: 'location' value: '" +
            location + "' } external_data { key: 'offset' value: '" + offset +
            "' } external_data { key: 'length' value: '4' } }",
        *model.mutable_graph());
    readExternalData(model, directory_.path());
    return model.graph().initializer(0).raw_data();
  };
  EXPECT_EQ(read("data.bin", "2"), std::string("\0\0\x80\x3f", 4));
  for (const std::string& location :
       {std::string("../") + directory_.path().filename().string() +
            "/data.bin",
        path("data.bin"), std::string(), std::string("none")})
    EXPECT_NE(errorOf([&] { read(location, "2"); }), "") << location;
  EXPECT_NE(errorOf([&] { read("data.bin", "3"); }).find("too short"),
            std::string::npos);
  EXPECT_NE(errorOf([&] { read("data.bin", "x"); }), "");
}

}  // namespace
}  // namespace onnx_client
