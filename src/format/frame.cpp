#include "format/frame.h"

#include <array>

#include "KivInterface.h"
#include "embedded/footer.c.h"
#include "embedded/header.c.h"

namespace kiv::format {
namespace {

constexpr std::array<std::string_view, 3> kGpuHeaders = {
    "GPU/KivGpuBackend.h", "GPU/KivGpuGraph.h", "GPU/KivGpuContext.h"};

// Places in the header, whose text is a C program with them and without.
constexpr std::string_view kNotice = "$NOTICE$";
constexpr std::string_view kHeaders = "// $HEADERS$\n";
constexpr std::string_view kDataFile = "$DATA_FILE$";

// Appends the text up to the next place and takes it off, with the place.
void appendUpTo(std::string_view place, std::string_view& text,
                std::string& result) {
  const std::size_t at = text.find(place);
  result += text.substr(0, at);
  text.remove_prefix(at + place.size());
}

}  // namespace

std::span<const std::string_view> headersOfBackend(std::uint32_t backendId) {
  if (backendId == KIV_BACKEND_ID_GPU) return kGpuHeaders;
  return {};
}

std::string programHeader(std::span<const std::string_view> includes,
                          std::string_view dataFileName,
                          std::string_view timeStamp) {
  std::string_view rest = kHeaderText;
  std::string text;
  const auto add = [&text](auto... pieces) { ((text += pieces), ...); };
  appendUpTo(kNotice, rest, text);
  add(KIV_RECORDER_VERSION);
  if (!timeStamp.empty()) add(" on ", timeStamp);
  appendUpTo(kHeaders, rest, text);
  for (const std::string_view header : includes)
    add("#include \"", header, "\"\n");
  appendUpTo(kDataFile, rest, text);
  add(dataFileName);
  appendUpTo(kDataFile, rest, text);
  add(dataFileName, rest);
  return text;
}

std::string_view programFooter() { return kFooterText; }

}  // namespace kiv::format
