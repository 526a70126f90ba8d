#include "arrays/npy.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>

#include "arrays/system_message.h"

namespace kiv::arrays {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMagic = "\x93NUMPY";
// The data begins at a multiple of it.
constexpr std::size_t kAlignment = 64;

// The entries of the header's dictionary.
struct Description {
  std::string element;
  bool isFortran = false;
  Shape shape;
};

// {'descr': '<f4', 'fortran_order': False, 'shape': (3, 4), }
class DescriptionReader {
 public:
  explicit DescriptionReader(std::string_view text) : text_(text) {}

  bool read(Description& description) {
    if (!take('{')) return false;
    int found = 0;
    while (!take('}')) {
      std::string key;
      if (!readText(key) || !take(':')) return false;
      if (key == "descr") {
        if (!readText(description.element)) return false;
      } else if (key == "fortran_order") {
        if (!readTruth(description.isFortran)) return false;
      } else if (key == "shape") {
        if (!readShape(description.shape)) return false;
      } else {
        return false;
      }
      ++found;
      take(',');
    }
    return found == 3;
  }

 private:
  bool take(char wanted) {
    skipBlanks();
    if (text_.empty() || text_.front() != wanted) return false;
    text_.remove_prefix(1);
    return true;
  }

  void skipBlanks() {
    const std::size_t begin = text_.find_first_not_of(" \t\r\n");
    text_.remove_prefix(std::min(begin, text_.size()));
  }

  bool readText(std::string& text) {
    skipBlanks();
    if (text_.empty() || (text_.front() != '\'' && text_.front() != '"'))
      return false;
    const std::size_t end = text_.find(text_.front(), 1);
    if (end == std::string_view::npos) return false;
    text = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    return true;
  }

  bool readTruth(bool& value) {
    skipBlanks();
    value = text_.starts_with("True");
    if (!value && !text_.starts_with("False")) return false;
    text_.remove_prefix(value ? 4 : 5);
    return true;
  }

  bool readShape(Shape& shape) {
    if (!take('(')) return false;
    while (!take(')')) {
      skipBlanks();
      std::uint64_t size = 0;
      const auto [end, error] =
          std::from_chars(text_.data(), text_.data() + text_.size(), size);
      if (error != std::errc{}) return false;
      text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
      shape.push_back(size);
      if (text_.starts_with('L')) text_.remove_prefix(1);
      take(',');
    }
    return true;
  }

  std::string_view text_;
};

bool isKnown(const Element& element) {
  switch (element.kind) {
    case 'b':
      return element.size == 1;
    case 'V':
      return element.size == 1 || element.size == 2;
    case 'i':
    case 'u':
      return element.size == 1 || element.size == 2 || element.size == 4 ||
             element.size == 8;
    case 'f':
      return element.size == 2 || element.size == 4 || element.size == 8;
    default:
      return false;
  }
}

// "<f4": the order of bytes, the kind, the size.
std::optional<Element> parseElement(std::string_view text) {
  if (text.size() < 3 ||
      std::string_view("<>|=").find(text[0]) == std::string_view::npos)
    return std::nullopt;
  Element element{text[1], 0};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 2, end, element.size);
  if (result.ec != std::errc{} || result.ptr != end || !isKnown(element))
    return std::nullopt;
  return element;
}

void swapBytes(std::vector<std::byte>& data, std::size_t size) {
  for (std::size_t at = 0; at + size <= data.size(); at += size)
    std::reverse(&data[at], &data[at] + size);
}

// From the first dimension varying fastest to the last one.
std::vector<std::byte> reordered(const std::vector<std::byte>& data,
                                 const Shape& shape, std::size_t size) {
  std::vector<std::byte> result(data.size());
  std::vector<std::uint64_t> strides(shape.size());
  std::uint64_t stride = size;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    strides[i] = stride;
    stride *= shape[i];
  }
  std::vector<std::uint64_t> index(shape.size());
  std::uint64_t from = 0;
  for (std::size_t to = 0; to < result.size(); to += size) {
    std::memcpy(&result[to], &data[from], size);
    for (std::size_t i = shape.size(); i-- > 0;) {
      from += strides[i];
      if (++index[i] < shape[i]) break;
      from -= strides[i] * shape[i];
      index[i] = 0;
    }
  }
  return result;
}

std::uint32_t littleEndian(std::span<const std::byte> bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    number = number << 8 | std::to_integer<std::uint32_t>(bytes[i]);
  return number;
}

}  // namespace

std::optional<Array> parseNpy(std::span<const std::byte> file,
                              std::string& why) {
  const auto refuse = [&why](std::string_view reason) {
    why = reason;
    return std::nullopt;
  };
  if (file.size() < 10 ||
      std::memcmp(file.data(), kMagic.data(), kMagic.size()) != 0)
    return refuse("it is no .npy file");
  const int version = std::to_integer<int>(file[6]);
  if (version < 1 || version > 3)
    return refuse("its version of the format .npy is unknown");
  const std::size_t digits = version == 1 ? 2 : 4;
  const std::size_t begin = 8 + digits;
  if (file.size() < begin) return refuse("its header is cut off");
  const std::size_t length = littleEndian(file.subspan(8, digits));
  if (file.size() - begin < length) return refuse("its header is cut off");
  Description description;
  const std::string_view text(
      reinterpret_cast<const char*>(file.data()) + begin, length);
  if (!DescriptionReader(text).read(description))
    return refuse("its header is not one of an array of plain elements");
  const auto element = parseElement(description.element);
  if (!element)
    return refuse("its elements of type " + description.element +
                  " are no numbers that tensors hold");
  const auto count = countOf(description.shape);
  const std::span<const std::byte> data = file.subspan(begin + length);
  if (!count || *count > data.size() / element->size)
    return refuse("it has less data than its shape says");
  Array array{*element, std::move(description.shape), {}};
  array.data.assign(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(
                                                     *count * element->size));
  if (description.element[0] == '>') swapBytes(array.data, element->size);
  if (description.isFortran)
    array.data = reordered(array.data, array.shape, element->size);
  return array;
}

std::optional<Array> readNpy(const fs::path& path, std::string& why) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!file || error) {
    why = error ? error.message() : systemMessage();
    return std::nullopt;
  }
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  file.read(reinterpret_cast<char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  if (!file) {
    why = systemMessage();
    return std::nullopt;
  }
  return parseNpy(bytes, why);
}

std::string npyHeader(const Element& element, const Shape& shape) {
  std::string text = "{'descr': '";
  text += element.size == 1 || element.kind == 'V' ? '|' : '<';
  text += element.kind + std::to_string(element.size);
  text += "', 'fortran_order': False, 'shape': (";
  for (const std::uint64_t size : shape) text += std::to_string(size) + ", ";
  // One dimension keeps its comma: (3,).
  if (!shape.empty()) text.erase(text.size() - (shape.size() == 1 ? 1 : 2));
  text += "), }";
  const bool isShort = text.size() < 0xff00;
  const std::size_t begin = isShort ? 10 : 12;
  const std::size_t end =
      (begin + text.size() + kAlignment) / kAlignment * kAlignment;
  text.append(end - begin - text.size() - 1, ' ').push_back('\n');
  std::string header(kMagic);
  header += isShort ? '\x01' : '\x02';
  header += '\0';
  for (std::size_t i = 0; i < begin - 8; ++i)
    header += static_cast<char>(text.size() >> (8 * i) & 0xff);
  return header + text;
}

bool writeNpy(const fs::path& path, const ArrayView& array, std::string& why) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  const std::string header = npyHeader(array.element, array.shape);
  file.write(header.data(), static_cast<std::streamsize>(header.size()));
  file.write(reinterpret_cast<const char*>(array.data.data()),
             static_cast<std::streamsize>(array.data.size()));
  file.close();
  if (file) return true;
  why = systemMessage();
  std::error_code ignored;
  fs::remove(path, ignored);
  return false;
}

}  // namespace kiv::arrays
