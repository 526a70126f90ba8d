#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "kiv_recording/output_keeper.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kCompareDescription =
    "Compare two directories of saved outputs";

constexpr const char* kCompareDetails =
    R"(Compares outputs that replays saved (or clients, as .npy files with a list
outputs.txt): the first directory's with the second one's, which are the
expected ones. Each output has a line with the largest and the mean absolute
difference, the largest relative one, the cosine of the angle between both, and
the first element that is over: |actual - expected| > atol + rtol * |expected|.
Outputs come in the order of the network; "=>" marks the first one that is over.
The exit status is 1 when one is over or only in one directory.

Example: in which layer do two backends part?
  kiv-recording replay saver_output -b ./libA.so --outputs all --save-outputs a
  kiv-recording replay saver_output -b ./libB.so --outputs all --save-outputs b
  kiv-recording compare a b)";

struct CompareOptions {
  std::string first;
  std::string second;
  arrays::Tolerance tolerance;
  bool isJson = false;
};

Json jsonOf(const arrays::Difference& difference) {
  Json json = {{"output", difference.path}, {"over", difference.isOver()}};
  if (!difference.problem.empty()) {
    json["problem"] = difference.problem;
    return json;
  }
  const arrays::Figures& figures = difference.figures;
  json["elements"] = figures.count;
  json["largest"] = figures.largest;
  json["mean"] = figures.mean;
  json["largestRelative"] = figures.largestRelative;
  json["cosine"] = figures.cosine;
  json["nans"] = {figures.actual.nans, figures.expected.nans};
  json["infinities"] = {figures.actual.infinities, figures.expected.infinities};
  json["elementsOver"] = figures.over;
  if (figures.firstOver)
    json["firstOver"] = {{"place", figures.firstOver->place},
                         {"actual", figures.firstOver->actual},
                         {"expected", figures.firstOver->expected}};
  if (!figures.shapes.empty()) json["shapes"] = figures.shapes;
  if (!figures.elements.empty()) json["types"] = figures.elements;
  return json;
}

void show(const std::vector<arrays::Difference>& differences) {
  std::size_t over = 0;
  for (const arrays::Difference& difference : differences) {
    if (difference.isOver()) ++over;
    showDifference(difference, difference.isOver() && over == 1);
  }
  if (over == 0)
    fmt::print("{} outputs are within\n", differences.size());
  else
    fmt::print("{} of {} outputs are over\n", over, differences.size());
}

int compare(const CompareOptions& options) {
  std::string why;
  const auto paths = arrays::readOutputList(pathOf(options.first), why);
  arrays::OutputComparison comparison(options.tolerance);
  if (!paths || !comparison.open(pathOf(options.second), why)) {
    fmt::print(stderr, "{}\n", why);
    return kUnreadable;
  }
  std::vector<arrays::Difference> differences;
  for (const std::string& path : *paths)
    differences.push_back(comparison.compare(path, pathOf(options.first)));
  for (arrays::Difference& difference : comparison.missing())
    differences.push_back(std::move(difference));
  if (options.isJson) {
    Json json = Json::array();
    for (const arrays::Difference& difference : differences)
      json.push_back(jsonOf(difference));
    fmt::print("{}\n",
               json.dump(2, ' ', false, Json::error_handler_t::replace));
  } else {
    show(differences);
  }
  return std::ranges::any_of(differences, &arrays::Difference::isOver)
             ? kDiffers
             : kDone;
}

}  // namespace

Verb addCompare(CLI::App& program) {
  const auto options = std::make_shared<CompareOptions>();
  CLI::App* verb = program.add_subcommand("compare", kCompareDescription);
  verb->footer(kCompareDetails);
  verb->add_option("DIR1", options->first, "Directory of saved outputs")
      ->required()
      ->type_name("");
  verb->add_option("DIR2", options->second, "The expected ones")
      ->required()
      ->type_name("");
  addTolerance(*verb, options->tolerance);
  verb->add_flag("--json", options->isJson, "Print the figures as JSON");
  return {verb, [options] { return compare(*options); }};
}

}  // namespace kiv::tool
