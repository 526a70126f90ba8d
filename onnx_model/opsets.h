#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// The versions of operators. Calls that add nodes do not say them, the
// backend's options do:
//
//   Opsets opsets;
//   opsets.readOption("onnx.opset:13");
//   opsets.readOption("onnx.opset.ai.onnx.ml:3");
//   opsets.versionOf("");
//
// One thread at a time.
namespace kiv::onnx_model {

// The package of the default domain's operators.
inline constexpr std::string_view kDefaultPackage = "ai.onnx";

// The domain as ONNX writes it, where the default domain is empty.
std::string domainOf(std::string_view package);

class Opsets {
 public:
  enum class Option : std::uint8_t {
    kTaken,
    // an option of another name
    kOther,
    // the version is no number above 0
    kMalformed
  };
  Option readOption(std::string_view option);

  void set(std::string_view package, std::int64_t version) {
    versions_[domainOf(package)] = version;
  }
  // The version of the default domain where no option names one; by default the
  // newest that the library of ONNX knows.
  void setNewest(std::int64_t version) { newest_ = version; }

  // Nothing for a domain that no option named.
  std::optional<std::int64_t> find(const std::string& domain) const;
  // The newest version of a domain that no option named.
  std::int64_t versionOf(const std::string& domain) const;

  const std::map<std::string, std::int64_t>& versions() const {
    return versions_;
  }

 private:
  std::map<std::string, std::int64_t> versions_;
  std::int64_t newest_ = 0;
};

}  // namespace kiv::onnx_model
