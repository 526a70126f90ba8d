#pragma once

// Pictures as the data of a network's input:
//
//   const Image image = readImage("line.png");
//   data = imageData(image, tensor, {.mean = {0.5}, .std = {0.5}});

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "network.h"

namespace onnx_client {

// Red, green and blue, a byte each, row by row from the top.
struct Image {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<std::uint8_t> pixels;
};

enum class Layout : std::uint8_t { kNchw, kNhwc };

struct ImageOptions {
  Layout layout = Layout::kNchw;
  // One number for all channels or one for each: a channel's value is
  // (pixel / 255 - mean) / std.
  std::vector<float> mean;
  std::vector<float> std;
};

// Whether a file's name ends like that of a picture.
bool isImageName(const std::string& path);

// A PNG or JPEG file; transparent parts are on white. A ClientError for one
// that cannot be read. What a camera says of its orientation is not regarded.
Image readImage(const std::string& path);

// The picture scaled to the input's sizes (bilinear). The input holds one
// picture of one channel (its brightness) or three, as floats or, as they are,
// as bytes; a ClientError for another one.
std::vector<std::uint8_t> imageData(const Image& image, const Tensor& input,
                                    const ImageOptions& options);

}  // namespace onnx_client
