#include "images.h"

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "errors.h"
#include "files.h"

namespace onnx_client {
namespace {

constexpr std::size_t kChannels = 3;
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw ClientError(path + " cannot be read: " + why);
}

Image makeImage(std::uint64_t width, std::uint64_t height,
                const std::string& path) {
  if (width == 0 || height == 0 || width > kMostPixels / height)
    refuse(path, "the picture is empty or too large");
  return {width, height, std::vector<std::uint8_t>(width * height * kChannels)};
}

// Frees what the library keeps in any case.
struct PngReader {
  png_image image{};

  PngReader() { image.version = PNG_IMAGE_VERSION; }
  ~PngReader() { png_image_free(&image); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
};

Image readPng(const std::string& path, const std::string& bytes) {
  PngReader reader;
  png_image& png = reader.image;
  if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0)
    refuse(path, png.message);
  png.format = PNG_FORMAT_RGB;
  Image image = makeImage(png.width, png.height, path);
  const png_color white = {255, 255, 255};
  if (png_image_finish_read(&png, &white, image.pixels.data(), 0, nullptr) == 0)
    refuse(path, png.message);
  return image;
}

// The library ends the program on an error unless it jumps.
struct JpegError {
  jpeg_error_mgr manager;
  std::jmp_buf place;
  char message[JMSG_LENGTH_MAX];
};

void jumpOnError(j_common_ptr jpeg) {
  auto* const error = reinterpret_cast<JpegError*>(jpeg->err);
  error->manager.format_message(jpeg, error->message);
  std::longjmp(error->place, 1);
}

// Nothing here has a destructor, so that a jump leaves nothing behind. The
// first call receives the sizes, the second one the pixels.
bool decodeJpeg(const std::string& bytes, JpegError& error, JDIMENSION sizes[2],
                std::uint8_t* pixels) {
  jpeg_decompress_struct jpeg;
  jpeg.err = jpeg_std_error(&error.manager);
  error.manager.error_exit = jumpOnError;
  error.manager.output_message = [](j_common_ptr) {};
  jpeg_create_decompress(&jpeg);
  if (setjmp(error.place) != 0) {
    jpeg_destroy_decompress(&jpeg);
    return false;
  }
  jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&jpeg, TRUE);
  sizes[0] = jpeg.image_width;
  sizes[1] = jpeg.image_height;
  if (pixels != nullptr) {
    jpeg.out_color_space = JCS_RGB;
    jpeg_start_decompress(&jpeg);
    while (jpeg.output_scanline < jpeg.output_height) {
      JSAMPROW row =
          pixels + kChannels * jpeg.output_width * jpeg.output_scanline;
      jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
  }
  jpeg_destroy_decompress(&jpeg);
  return true;
}

Image readJpeg(const std::string& path, const std::string& bytes) {
  const auto error = std::make_unique<JpegError>();
  JDIMENSION sizes[2] = {0, 0};
  if (!decodeJpeg(bytes, *error, sizes, nullptr)) refuse(path, error->message);
  Image image = makeImage(sizes[0], sizes[1], path);
  if (!decodeJpeg(bytes, *error, sizes, image.pixels.data()))
    refuse(path, error->message);
  return image;
}

// ---- scaling ----

// Between which two of `from` pixels one of `to` lies, and how near the second.
struct Between {
  std::size_t first;
  std::size_t second;
  double weight;
};

Between between(std::size_t index, std::size_t from, std::size_t to) {
  const double at =
      std::clamp((static_cast<double>(index) + 0.5) *
                         static_cast<double>(from) / static_cast<double>(to) -
                     0.5,
                 0.0, static_cast<double>(from - 1));
  const auto first = static_cast<std::size_t>(at);
  return {first, std::min(first + 1, from - 1),
          at - static_cast<double>(first)};
}

double channelAt(const Image& image, std::size_t x, std::size_t y,
                 std::size_t channel) {
  return image.pixels[(y * image.width + x) * kChannels + channel];
}

double scaledAt(const Image& image, const Between& x, const Between& y,
                std::size_t channel) {
  const auto row = [&](std::size_t line) {
    return channelAt(image, x.first, line, channel) * (1 - x.weight) +
           channelAt(image, x.second, line, channel) * x.weight;
  };
  return row(y.first) * (1 - y.weight) + row(y.second) * y.weight;
}

// ---- the input ----

struct Sizes {
  std::size_t channels = 0;
  std::size_t height = 0;
  std::size_t width = 0;
};

Sizes sizesOf(const Tensor& input, Layout layout) {
  const auto& sizes = input.shape.dimensions;
  const bool isNchw = layout == Layout::kNchw;
  if (sizes.size() == 4 && sizes[0] == 1) {
    const Sizes result = isNchw ? Sizes{sizes[1], sizes[2], sizes[3]}
                                : Sizes{sizes[3], sizes[1], sizes[2]};
    if (result.channels == 1 || result.channels == kChannels) return result;
  }
  throw ClientError("input " + input.name +
                    " takes no picture: its sizes are " +
                    "not those of one with 1 or 3 channels in the layout " +
                    (isNchw ? "nchw" : "nhwc") + " (--shape, --layout)");
}

float optionFor(const std::vector<float>& values, std::size_t channel,
                float otherwise) {
  if (values.empty()) return otherwise;
  return values[std::min(channel, values.size() - 1)];
}

void checkOptions(const ImageOptions& options, const Sizes& sizes,
                  const Tensor& input) {
  for (const auto* values : {&options.mean, &options.std}) {
    if (values->size() > 1 && values->size() != sizes.channels)
      throw ClientError("input " + input.name + " has " +
                        std::to_string(sizes.channels) +
                        " channels, --mean and --std take one number or as "
                        "many");
    if (!values->empty() && input.dataType != KIV_DATA_TYPE_FLOAT_32)
      throw ClientError("--mean and --std are for inputs of 32-bit floats");
  }
}

double valueAt(const Image& image, const Between& x, const Between& y,
               std::size_t channel, std::size_t channels) {
  if (channels == kChannels) return scaledAt(image, x, y, channel);
  return 0.299 * scaledAt(image, x, y, 0) + 0.587 * scaledAt(image, x, y, 1) +
         0.114 * scaledAt(image, x, y, 2);
}

}  // namespace

bool isImageName(const std::string& path) {
  std::string end = path.substr(path.find_last_of('.') + 1);
  std::ranges::transform(end, end.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  return end == "png" || end == "jpg" || end == "jpeg";
}

Image readImage(const std::string& path) {
  const std::string bytes = readFile(path);
  if (bytes.starts_with("\x89PNG")) return readPng(path, bytes);
  if (bytes.starts_with("\xff\xd8")) return readJpeg(path, bytes);
  refuse(path, "it is neither PNG nor JPEG");
}

std::vector<std::uint8_t> imageData(const Image& image, const Tensor& input,
                                    const ImageOptions& options) {
  const Sizes sizes = sizesOf(input, options.layout);
  checkOptions(options, sizes, input);
  const bool isFloat = input.dataType == KIV_DATA_TYPE_FLOAT_32;
  if (!isFloat && input.dataType != KIV_DATA_TYPE_UINT_8)
    throw ClientError("input " + input.name +
                      " takes no picture: its elements are neither 32-bit "
                      "floats nor bytes");
  const std::size_t count = sizes.channels * sizes.height * sizes.width;
  std::vector<std::uint8_t> data(count * (isFloat ? sizeof(float) : 1));
  for (std::size_t i = 0; i < sizes.height * sizes.width; ++i) {
    const Between x = between(i % sizes.width, image.width, sizes.width);
    const Between y = between(i / sizes.width, image.height, sizes.height);
    for (std::size_t c = 0; c < sizes.channels; ++c) {
      const double pixel = valueAt(image, x, y, c, sizes.channels);
      const std::size_t place = options.layout == Layout::kNchw
                                    ? c * sizes.height * sizes.width + i
                                    : i * sizes.channels + c;
      if (!isFloat) {
        data[place] = static_cast<std::uint8_t>(std::lround(pixel));
        continue;
      }
      const float value =
          (static_cast<float>(pixel / 255) - optionFor(options.mean, c, 0)) /
          optionFor(options.std, c, 1);
      std::memcpy(&data[place * sizeof(float)], &value, sizeof(float));
    }
  }
  return data;
}

}  // namespace onnx_client
