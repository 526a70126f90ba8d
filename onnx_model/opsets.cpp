#include "onnx_model/opsets.h"

#include <onnx/defs/schema.h>

#include <charconv>

namespace kiv::onnx_model {
namespace {

constexpr std::string_view kOptionName = "onnx.opset";

// 0 for a text that is no number above 0.
int parseVersion(std::string_view digits) {
  int version = 0;
  const char* const last = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), last, version);
  return error == std::errc{} && end == last && version > 0 ? version : 0;
}

}  // namespace

std::string domainOf(std::string_view package) {
  return package == kDefaultPackage ? std::string() : std::string(package);
}

Opsets::Option Opsets::readOption(std::string_view option) {
  if (!option.starts_with(kOptionName)) return Option::kOther;
  option.remove_prefix(kOptionName.size());
  const std::size_t colon = option.rfind(':');
  std::string_view package = option.substr(0, colon);
  if (!package.empty() && !package.starts_with('.')) return Option::kOther;
  if (!package.empty()) package.remove_prefix(1);
  const int version =
      colon == option.npos ? 0 : parseVersion(option.substr(colon + 1));
  if (version == 0) return Option::kMalformed;
  set(package, version);
  return Option::kTaken;
}

std::optional<std::int64_t> Opsets::find(const std::string& domain) const {
  const auto found = versions_.find(domain);
  if (found == versions_.end()) return std::nullopt;
  return found->second;
}

std::int64_t Opsets::versionOf(const std::string& domain) const {
  if (const auto version = find(domain)) return *version;
  if (domain.empty() && newest_ != 0) return newest_;
  const auto& known =
      onnx::OpSchemaRegistry::DomainToVersionRange::Instance().Map();
  const auto range = known.find(domain);
  return range == known.end() ? 1 : range->second.second;
}

}  // namespace kiv::onnx_model
