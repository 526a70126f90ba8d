#include "session/names.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "format/identifiers.h"
#include "support/sanitized.h"

namespace kiv::session::test {
namespace {

using Strings = std::vector<std::string>;

TEST(NamesTest, CountsWhatIsTakenAndFreesWhatIsReleased) {
  Names names;
  EXPECT_EQ(names.unique("context", Family::kContext), "context_0");
  EXPECT_EQ(names.unique("context", Family::kContext), "context_1");
  for (const char* name : {"mobilenet", "_1x1", "model_v2", "g_tensor_0"})
    EXPECT_EQ(names.claim(name, Family::kGraph), name);
  for (const char* name : {"mobilenet", "int", "error", "linux", "i", "printf"})
    EXPECT_EQ(names.claim(name, Family::kGraph), std::string(name) + "_0");
  names.release("g_tensor_0");
  EXPECT_EQ(names.claim("g_tensor_0", Family::kGraph), "g_tensor_0");
  names.release("g_tensor_0");
  EXPECT_EQ(names.claim("g", Family::kGraph), "g");
}

TEST(NamesTest, StepsAsideWhereNamesWouldMeet) {
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
       {true, "g_tensors", kGraph, "g_tensors"}},
      // A variable would bring a name that is there already.
      {{false, "op_0_input", kOpConfig, "op_0_input_0"},
       {false, "op", kOpConfig, "op_1"}},
      // Names that look like those of a compiler or of the API.
      {{false, "__x", kOpConfig, "__x_0"},
       {false, "Kiv_Graph", kOpConfig, "Kiv_Graph_0"},
       {false, "", kOpConfig, "_0"}},
  };
  for (const auto& steps : cases) {
    Names names;
    for (const Step& step : steps) {
      EXPECT_EQ(step.claim ? names.claim(step.name, step.family)
                           : names.unique(step.name, step.family),
                step.expected);
    }
  }
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
  static const std::map<Family, Strings> all = {
      {Family::kPlain, {""}},
      {Family::kContext, split(". _tensor_#@")},
      {Family::kGraph, split(". _tensor_#@ _inputTensors_# _outputTensors_# "
                             "_inputTensor_#_#@ _outputTensor_#_#@")},
      {Family::kOpConfig,
       split(". _params _param_# _param_#_scalar _param_#_tensor@ _inputs "
             "_input_#@ _outputs _output_#@ _v1")},
      {Family::kConfig,
       split(". _array _customConfig _config _config_v1 _config_hwDevices")},
      {Family::kDeviceOrCore, split(". _v1 _cores")}};
  return all.at(family);
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

// All names that a pattern stands for.
Strings expanded(const std::string& pattern) {
  const std::size_t at = pattern.find_first_of("#@");
  if (at == std::string::npos) return {pattern};
  Strings result;
  for (const std::string& part : choicesFor(pattern[at])) {
    const Strings names =
        expanded(pattern.substr(0, at) + part + pattern.substr(at + 1));
    result.insert(result.end(), names.begin(), names.end());
  }
  return result;
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
  // The first two need not be there: they are to come.
  std::vector<std::pair<std::string, Family>> variables = {
      {"a", Family::kGraph}, {"op_0", Family::kOpConfig}};
  const auto owner = [&] {
    return variables[random() % variables.size()].first;
  };
  const auto clientName = [&] {
    std::string name = random() % 2 == 0 ? owner() : oneOf(chosen);
    for (auto i = random() % 4; i > 0; --i) name += '_' + oneOf(chosen);
    if (random() % 2 == 0) {
      const auto& [bringing, family] = variables[random() % variables.size()];
      name = oneOf(expanded(bringing + oneOf(derivedFrom(family))));
    }
    // An operation gets its number back.
    if (random() % 2 == 0) name.erase(name.find_last_not_of("_0123456789") + 1);
    if (name.empty() || name[0] == '_') name.insert(0, 1, 'a');
    return format::sanitizeIdentifier(name);
  };
  const auto add = [&](const std::string& name, Family family) {
    EXPECT_FALSE(format::isReservedIdentifier(name)) << name;
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
        const std::string context = unique("context", Family::kContext);
        add(names.claim(context + "_binary", Family::kPlain), Family::kPlain);
        break;
      }
      case 4:
        unique(owner() + "_config", Family::kPlain);
        unique(owner() + "_enableGraphs", Family::kConfig);
        break;
      case 5: {
        const std::string info =
            unique(owner() + "_hardwareInfo", Family::kConfig);
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
      for (const std::string& derived : expanded(name + pattern)) {
        if (!declared.insert(derived).second) twice.push_back(derived);
      }
    }
  }
  return twice;
}

TEST(NamesTest, NoVariableIsDeclaredTwiceWhateverClientsChoose) {
  constexpr unsigned kSeeds = kiv::test::kIsSanitized ? 30 : 100;
  for (unsigned seed = 0; seed < kSeeds && !HasFailure(); ++seed)
    EXPECT_EQ(clashesOf(seed), Strings{}) << "seed " << seed;
}

}  // namespace
}  // namespace kiv::session::test
