#pragma once

// Operators and the operator sets that their nodes follow:
//
//   OpSets opSets;
//   opSets.readOption("onnx.opset:9");
//   opSets.readOption("onnx.opset.ai.onnx.ml:3");
//   const onnx::OpSchema* schema = findSchema("Conv", "ai.onnx", 9);
//
// The operator set tells which version of an operator a node means, which the
// calls that add nodes do not say. Not for several threads at once.

#include <onnx/defs/schema.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kiv::ort {

// The package of the default domain's operators.
inline constexpr const char* kDefaultPackage = "ai.onnx";

// The domain as ONNX writes it, where the default domain is empty.
std::string domainOf(std::string_view package);

class OpSets {
 public:
  // Takes an option of a backend; others than the ones above are passed over.
  // A Failure for an operator set that is no number above 0.
  void readOption(std::string_view option);

  // Nothing if no option named the domain.
  std::optional<int> find(const std::string& domain) const;

  const std::map<std::string, int>& versions() const { return versions_; }
  void set(const std::string& domain, int version) {
    versions_[domain] = version;
  }

 private:
  std::map<std::string, int> versions_;
};

// The operator set of a domain that an option names, else `newest` for the
// default domain, and the newest that libonnx knows for others.
int versionFor(const OpSets& opSets, const std::string& domain, int newest);

// Null for an operator that libonnx does not know.
const onnx::OpSchema* findSchema(const std::string& type,
                                 const std::string& domain, int version);

struct OperatorName {
  std::string package;
  std::string type;
};

// The operators that libonnx knows but for those of training, in order.
std::vector<OperatorName> knownOperators();

}  // namespace kiv::ort
