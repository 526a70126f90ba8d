#pragma once

// Files with the data of inputs:
//
//   const auto files = assignFiles({"x=line.png", "more.npy"}, names);
//   data = readInputFile("line.png", tensor, imageOptions);

#include <map>
#include <string>
#include <vector>

#include "images.h"
#include "network.h"

namespace onnx_client {

// The file of each input by its index. An argument is NAME=FILE, or FILE for
// the next input that has none. A ClientError for one file too many.
std::map<std::size_t, std::string> assignFiles(
    const std::vector<std::string>& arguments,
    const std::vector<std::string>& inputs);

// The bytes for an input: a tensor of ONNX (.pb), an array (.npy), a picture
// (.png, .jpg), or else the bytes of the file. A ClientError for a file that
// does not fit the input.
std::vector<std::uint8_t> readInputFile(const std::string& path,
                                        const Tensor& tensor,
                                        const ImageOptions& options);

}  // namespace onnx_client
