#include "op_schemas.h"

#include <algorithm>
#include <charconv>
#include <tuple>

#include "failure.h"

namespace kiv::ort {
namespace {

constexpr std::string_view kOptionName = "onnx.opset";

int parseVersion(std::string_view text, std::string_view option) {
  int version = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, version);
  if (error != std::errc() || at != end || version < 1) {
    throw Failure(KIV_BACKEND_ERROR_INVALID_ARGUMENT,
                  "the platform option \"" + std::string(option) +
                      "\" names no operator set, it is " +
                      std::string(kOptionName) + "[.DOMAIN]:NUMBER");
  }
  return version;
}

bool isTraining(const std::string& domain) {
  return domain.find("training") != std::string::npos;
}

}  // namespace

std::string domainOf(std::string_view package) {
  return package == kDefaultPackage ? std::string() : std::string(package);
}

void OpSets::readOption(std::string_view option) {
  if (!option.starts_with(kOptionName)) return;
  const std::size_t colon = option.rfind(':');
  std::string_view domain = option.substr(
      kOptionName.size(),
      colon == option.npos ? option.npos : colon - kOptionName.size());
  if (!domain.empty() && domain.front() != '.') return;
  if (!domain.empty()) domain.remove_prefix(1);
  const std::string_view number =
      colon == option.npos ? std::string_view() : option.substr(colon + 1);
  versions_[domainOf(domain)] = parseVersion(number, option);
}

std::optional<int> OpSets::find(const std::string& domain) const {
  const auto found = versions_.find(domain);
  if (found == versions_.end()) return std::nullopt;
  return found->second;
}

int versionFor(const OpSets& opSets, const std::string& domain, int newest) {
  if (const auto version = opSets.find(domain)) return *version;
  if (domain.empty()) return newest;
  const auto& ranges =
      onnx::OpSchemaRegistry::DomainToVersionRange::Instance().Map();
  const auto found = ranges.find(domain);
  return found == ranges.end() ? 1 : found->second.second;
}

const onnx::OpSchema* findSchema(const std::string& type,
                                 const std::string& domain, int version) {
  return onnx::OpSchemaRegistry::Schema(type, version, domain);
}

std::vector<OperatorName> knownOperators() {
  std::vector<OperatorName> names;
  for (const onnx::OpSchema& schema :
       onnx::OpSchemaRegistry::get_all_schemas()) {
    if (isTraining(schema.domain())) continue;
    const bool isDefault = schema.domain().empty();
    names.push_back(
        {isDefault ? kDefaultPackage : schema.domain(), schema.Name()});
  }
  std::sort(names.begin(), names.end(),
            [](const OperatorName& a, const OperatorName& b) {
              return std::tie(a.package, a.type) < std::tie(b.package, b.type);
            });
  return names;
}

}  // namespace kiv::ort
