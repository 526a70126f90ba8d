#include "kept_outputs.h"

#include <charconv>

#include "diagnostics/logger.h"
#include "format/enum_value.h"
#include "output/output_settings.h"
#include "platform/process.h"

namespace kiv::relay {
namespace {

constexpr const char* kSwitch = "KIV_RELAY_KEEP_OUTPUTS";
constexpr const char* kLimit = "KIV_RELAY_KEEP_BYTES";
constexpr std::uint64_t kDefaultLimit = std::uint64_t{1} << 30;

std::uint64_t limitFromEnvironment() {
  const auto wanted = platform::environmentVariable(kSwitch);
  if (!wanted || *wanted == "0") return 0;
  if (*wanted != "1")
    log::log(log::Level::kWarning, "%s must be 0 or 1, and is taken for 1: %s",
             kSwitch, wanted->c_str());
  const auto text = platform::environmentVariable(kLimit);
  if (!text) return kDefaultLimit;
  std::uint64_t limit = 0;
  const char* const end = text->data() + text->size();
  const auto result = std::from_chars(text->data(), end, limit);
  if (result.ec == std::errc() && result.ptr == end && limit != 0) return limit;
  log::log(log::Level::kWarning,
           "%s must be a number of bytes, and is passed over: %s", kLimit,
           text->c_str());
  return kDefaultLimit;
}

}  // namespace

bool hasId(const Kiv_Tensor_t& tensor) {
  const std::uint32_t version = format::enumValue(tensor.version);
  return version == KIV_TENSOR_VERSION_1 || version == KIV_TENSOR_VERSION_2;
}

OwnedTensors::OwnedTensors(const Kiv_Tensor_t* tensors, std::uint32_t count) {
  if (tensors == nullptr) return;
  names_.reserve(count);
  dimensions_.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!hasId(tensors[i])) continue;
    Kiv_Tensor_t copy = tensors[i];
    Kiv_TensorV1_t& v1 = copy.v1;
    names_.emplace_back(v1.name == nullptr ? "" : v1.name);
    v1.name = names_.back().c_str();
    if (v1.dimensions != nullptr) {
      dimensions_.emplace_back(v1.dimensions, v1.dimensions + v1.rank);
      v1.dimensions = dimensions_.back().data();
    }
    tensors_.push_back(copy);
  }
}

KeptOutputs::KeptOutputs() : limit_(limitFromEnvironment()) {}

void KeptOutputs::begin(const std::string& directory) {
  const std::lock_guard lock(mutex_);
  if (writer_ != nullptr && directory == directory_) return;
  directory_ = directory;
  writer_ = std::make_unique<arrays::OutputWriter>();
  whyNot_.clear();
  writer_->open(output::pathOf(directory, "outputs"), whyNot_);
}

void KeptOutputs::keep(Answers& answers, const Execution& execution,
                       std::span<const Kiv_Tensor_t> outputs) {
  const std::lock_guard lock(mutex_);
  if (isFull_ || writer_ == nullptr) return;
  const std::string why =
      whyNot_.empty() ? keepAll(execution, outputs) : whyNot_;
  if (why.empty()) return;
  isFull_ = true;
  answers.outputsDropped(execution.place, why);
}

std::string KeptOutputs::keepAll(const Execution& execution,
                                 std::span<const Kiv_Tensor_t> outputs) {
  std::string why;
  for (const Kiv_Tensor_t& tensor : outputs) {
    std::string ignored;
    const auto view = hasId(tensor) ? arrays::viewOf(tensor, ignored)
                                    : std::optional<arrays::ArrayView>();
    if (!view) continue;
    if (view->data.size() > limit_ - bytes_)
      return "the limit of " + std::to_string(limit_) + " bytes is reached";
    const char* const name = tensor.v1.name;
    if (!writer_->save(
            {execution.graph, execution.number, name == nullptr ? "" : name},
            *view, why))
      return why;
    bytes_ += view->data.size();
  }
  return "";
}

}  // namespace kiv::relay
