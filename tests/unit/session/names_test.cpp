#include "session/names.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "output/identifiers.h"

namespace kiv::session::test {
namespace {

using Strings = std::vector<std::string>;

TEST(NamesTest, CountsForEachBaseFromZero) {
  Names names;
  EXPECT_EQ(names.unique("context", Family::kTensorOwner), "context_0");
  EXPECT_EQ(names.unique("context", Family::kTensorOwner), "context_1");
  EXPECT_EQ(names.unique("device"), "device_0");
  EXPECT_EQ(names.unique("backendConfig_customConfig", Family::kConfig),
            "backendConfig_customConfig_0");
  EXPECT_EQ(names.unique("context", Family::kTensorOwner), "context_2");
}

TEST(NamesTest, ClaimsANameAsItIsWhenItIsFree) {
  Names names;
  for (const char* name : {"mobilenet", "a", "_1x1", "model_v2", "conv_7"})
    EXPECT_EQ(names.claim(name, Family::kGraph), name);
  EXPECT_EQ(names.claim("mobilenet", Family::kGraph), "mobilenet_0");
  for (const char* name : {"int", "error", "linux", "i", "NULL", "printf"})
    EXPECT_EQ(names.claim(name, Family::kGraph), std::string(name) + "_0");
}

TEST(NamesTest, AReleasedNameIsFreeAgain) {
  Names names;
  const std::string name = names.claim("g_tensor_0", Family::kGraph);
  EXPECT_EQ(name, "g_tensor_0");
  names.release(name);
  EXPECT_EQ(names.claim("g_tensor_0", Family::kGraph), "g_tensor_0");
  names.release(name);
  EXPECT_EQ(names.claim("g", Family::kGraph), "g");
}

TEST(NamesTest, EachStepAsideEnds) {
  struct Step {
    bool claim;
    const char* name;
    Family family;
    const char* expected;
  };
  using enum Family;
  const std::vector<Step> cases[] = {
      // An operation's number is that of a graph.
      {{true, "conv_0", kGraph, "conv_0"},
       {false, "conv", kOpConfig, "conv_1"}},
      // A name would be a tensor that the graph brings.
      {{true, "g", kGraph, "g"},
       {false, "g_tensor", kOpConfig, "g_tensor_0_0"},
       {false, "g_inputTensors", kOpConfig, "g_inputTensors_0_0"},
       {true, "g_tensor_5_data", kGraph, "g_tensor_5_data_0"},
       {true, "g_tensors", kGraph, "g_tensors"}},
      // A graph would bring a tensor that is a name already.
      {{false, "g_tensor", kOpConfig, "g_tensor_0"},
       {true, "g", kGraph, "g_0"}},
      // An operation beside another's input.
      {{false, "op", kOpConfig, "op_0"},
       {false, "op_0_input", kOpConfig, "op_0_input_0_0"}},
      {{false, "op_0_input", kOpConfig, "op_0_input_0"},
       {false, "op", kOpConfig, "op_1"}},
      {{false, "context", kTensorOwner, "context_0"},
       {true, "context_0_tensor_1_dims", kGraph, "context_0_tensor_1_dims_0"}},
      // Names that look like those of a compiler or of the API.
      {{false, "_Conv", kOpConfig, "_Conv_0"},
       {false, "__x", kOpConfig, "__x_0"},
       {false, "KIV_x", kOpConfig, "KIV_x_0"},
       {false, "Kiv_Graph", kOpConfig, "Kiv_Graph_0"}},
      {{false, "INT", kOpConfig, "INT_0"}, {false, "", kOpConfig, "_0"}},
  };
  alarm(20);  // rather than hang
  for (const auto& steps : cases) {
    Names names;
    for (const Step& step : steps) {
      EXPECT_EQ(step.claim ? names.claim(step.name, step.family)
                           : names.unique(step.name, step.family),
                step.expected);
    }
  }
  alarm(0);
}

// The words of a text; "." stands for an empty one.
Strings split(const std::string& text) {
  std::istringstream words(text);
  Strings result;
  for (std::string word; words >> word;)
    result.push_back(word == "." ? "" : word);
  return result;
}

// What a variable of each family brings into the program without asking: "#" is
// a number, "@" what a tensor brings.
const Strings& derivedFrom(Family family) {
  static const Strings plain = {""};
  static const Strings tensorOwner = split(". _tensor_#@");
  static const Strings graph = split(
      ". _tensor_#@ _inputTensors_# _outputTensors_# _inputTensor_#_#@ "
      "_outputTensor_#_#@");
  static const Strings opConfig = split(
      ". _params _param_# _param_#_scalar _param_#_tensor@ _inputs _input_#@ "
      "_outputs _output_#@ _v1");
  static const Strings config =
      split(". _array _customConfig _config _config_v1 _config_hwDevices");
  static const Strings deviceOrCore = split(". _v1 _cores");
  switch (family) {
    case Family::kTensorOwner:
      return tensorOwner;
    case Family::kGraph:
      return graph;
    case Family::kOpConfig:
      return opConfig;
    case Family::kConfig:
      return config;
    case Family::kDeviceOrCore:
      return deviceOrCore;
    default:
      return plain;
  }
}

// What may stand for the first "#" or "@" of a pattern.
const Strings& choicesFor(char placeholder) {
  static const Strings numbers = {"0", "1"};
  static const Strings tensor = split(
      ". _dims _data _clientBuf _isDynamicDimensions _v1 _v2 _quantizeParams "
      "_quantizeParams_scaleOffsets _quantizeParams_axisScaleOffset "
      "_quantizeParams_scales _quantizeParams_offsets "
      "_quantizeParams_bwAxisScaleOffset");
  return placeholder == '#' ? numbers : tensor;
}

// Calls `visit` with the names that a pattern stands for: all, or those that
// `choose` picks of the choices at each place.
template <typename Choose, typename Visit>
void expand(const std::string& pattern, Choose&& choose, Visit&& visit) {
  const std::size_t at = pattern.find_first_of("#@");
  if (at == std::string::npos) return visit(pattern);
  for (const std::string& part : choose(choicesFor(pattern[at]))) {
    expand(pattern.substr(0, at) + part + pattern.substr(at + 1), choose,
           visit);
  }
}

// Makes objects with names that clash in every way; returns what is declared
// twice once all that is derived from them is there.
Strings clashesOf(unsigned seed) {
  static const Strings words = split(
      "a g op conv tensor 0 1 input inputs param params scalar output v1 dims "
      "data error int linux context backend config array inputTensors "
      "inputTensor quantizeParams scales customConfig hwDevice hardwareInfo "
      "core cores");
  std::mt19937 random(seed);
  const auto oneOf = [&](const Strings& all) {
    return all[random() % all.size()];
  };
  // Few words for each program, so that they meet.
  Strings chosen;
  for (int i = 0; i < 5; ++i) chosen.push_back(oneOf(words));
  Names names;
  Strings owners = {"a", "op_0"};
  std::vector<std::pair<std::string, Family>> variables = {
      {"a", Family::kGraph}, {"op_0", Family::kOpConfig}};
  // What some variable brings along, be it there or to come.
  const auto derivedName = [&] {
    const auto& [owner, family] = variables[random() % variables.size()];
    std::string name;
    expand(
        owner + oneOf(derivedFrom(family)),
        [&](const Strings& all) { return Strings{oneOf(all)}; },
        [&](const std::string& derived) { name = derived; });
    return name;
  };
  const auto clientName = [&] {
    std::string name = oneOf(random() % 2 == 0 ? owners : chosen);
    for (auto i = random() % 4; i > 0; --i) name += '_' + oneOf(chosen);
    if (random() % 2 == 0) name = derivedName();
    // An operation gets its number back.
    if (random() % 2 == 0) name.erase(name.find_last_not_of("_0123456789") + 1);
    if (name.empty() || name[0] == '_') name.insert(0, 1, 'a');
    return output::sanitizeIdentifier(name);
  };
  variables.reserve(200);
  const auto add = [&](const std::string& name, Family family) {
    EXPECT_FALSE(output::isReservedIdentifier(name)) << name;
    owners.push_back(name);
    variables.emplace_back(name, family);
    return name;
  };
  const auto unique = [&](const std::string& base, Family family) {
    return add(names.unique(base, family), family);
  };
  for (int i = 0; i < 40; ++i) {
    switch (random() % 6) {
      case 0: {
        const std::string graph = names.claim(clientName(), Family::kGraph);
        if (random() % 4 == 0) {
          names.release(graph);
        } else {
          add(graph, Family::kGraph);
        }
        break;
      }
      case 1:
      case 2:
        unique(clientName(), Family::kOpConfig);
        break;
      case 3: {
        const std::string context = unique("context", Family::kTensorOwner);
        add(names.claim(context + "_binary"), Family::kPlain);
        break;
      }
      case 4:
        unique(oneOf(owners) + "_config", Family::kPlain);
        unique(oneOf(owners) + "_enableGraphs", Family::kConfig);
        break;
      case 5: {
        const std::string info =
            unique(oneOf(owners) + "_hardwareInfo", Family::kConfig);
        const std::string device =
            unique(info + "_config_hwDevice", Family::kDeviceOrCore);
        unique(device + "_core", Family::kDeviceOrCore);
        break;
      }
    }
  }
  variables.erase(variables.begin(), variables.begin() + 2);
  std::set<std::string> declared;
  Strings twice;
  for (const auto& [name, family] : variables) {
    for (const std::string& pattern : derivedFrom(family)) {
      expand(
          name + pattern, [](const Strings& all) { return all; },
          [&](const std::string& derived) {
            if (!declared.insert(derived).second) twice.push_back(derived);
          });
    }
  }
  return twice;
}

TEST(NamesTest, NoVariableIsDeclaredTwiceWhateverClientsChoose) {
  alarm(120);
  for (unsigned seed = 0; seed < 100 && !HasFailure(); ++seed)
    EXPECT_EQ(clashesOf(seed), Strings{}) << "seed " << seed;
  alarm(0);
}

}  // namespace
}  // namespace kiv::session::test
