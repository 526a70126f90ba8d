#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "arrays/array.h"

// Arrays in files of NumPy's format .npy (its NEP 1), which most tools of the
// field read.
//
//   std::string why;
//   if (!writeNpy("y.npy", view, why)) return why;
//   std::optional<Array> array = readNpy("y.npy", why);
//
// Files are written with little-endian elements, the last dimension varying
// fastest. Elements that the format has no type for are written as bytes ("|V1"
// for 4-bit numbers, one in each byte, "|V2" for bfloat16). From any thread.
namespace kiv::arrays {

// Reads the versions 1.0, 2.0 and 3.0, either order of bytes and of dimensions.
// Nothing, with the reason, for what cannot be read or holds no numbers.
std::optional<Array> readNpy(const std::filesystem::path& path,
                             std::string& why);
std::optional<Array> parseNpy(std::span<const std::byte> file,
                              std::string& why);

// The bytes of a file before its data.
std::string npyHeader(const Element& element, const Shape& shape);

// A file that cannot be written whole does not stay.
bool writeNpy(const std::filesystem::path& path, const ArrayView& array,
              std::string& why);

}  // namespace kiv::arrays
