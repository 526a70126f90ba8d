#pragma once

#include <fmt/format.h>

#include <cstdint>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "KivInterface.h"

// The API's records as text, in the grammar of backends/tracer/README.md:
//
//   Text text;
//   append(text, tensor);  // {version=1, id=7, name="x", ...}
//
// A record whose version, option or encoding is unknown shows that number and
// nothing below it. From any thread.
namespace kiv::tool {

using Text = fmt::memory_buffer;

// Quoted, all but printable ASCII escaped as \xHH; null for null.
void append(Text& text, const char* string);

// Bytes by their length and a hash of the first `hashed` of them.
struct Bytes {
  const void* bytes;
  std::uint64_t hashed;
  std::uint64_t length;
};
void append(Text& text, const Bytes& data);

void append(Text& text, const Kiv_Tensor_t& tensor);
// An array of no tensors is empty even if its pointer is null.
void append(Text& text, const Kiv_Tensor_t* tensors, std::uint32_t count);
void append(Text& text, const Kiv_OpConfig_t& config);

void append(Text& text, const KivBackend_Config_t& config);
void append(Text& text, const KivContext_Config_t& config);
void append(Text& text, const KivDevice_Config_t& config);
void append(Text& text, const KivGraph_Config_t& config);
void append(Text& text, const KivProfile_Config_t& config);

// "[item, item]" of records that a null pointer ends. No list is an empty one.
template <typename Config>
void appendConfigs(Text& text, const Config* const* configs) {
  text.push_back('[');
  for (auto item = configs; item != nullptr && *item != nullptr; ++item) {
    if (item != configs) text.append(std::string_view(", "));
    append(text, **item);
  }
  text.push_back(']');
}

}  // namespace kiv::tool
