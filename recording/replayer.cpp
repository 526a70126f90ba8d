#include "recording/replayer.h"

#include <cstdio>
#include <fstream>
#include <set>

#include "recording/invoke.h"
#include "recording/statuses.h"

namespace kiv::recording {
namespace {

using format::ArgumentKind;

constexpr std::size_t kMostFailures = 100;
constexpr std::size_t kMostNames = 8;

std::string quoted(const char* text) {
  if (text == nullptr) return "without a name";
  return std::string("\"").append(shortened(text)).append("\"");
}

const char* nameOfTensor(const Kiv_Tensor_t& tensor) { return tensor.v1.name; }

void appendTensors(std::string& text, std::string_view what,
                   const Kiv_Tensor_t* tensors, std::uint32_t count) {
  if (tensors == nullptr || count == 0) return;
  text.append(", ").append(what).append(" ");
  for (std::uint32_t i = 0; i < count && i < kMostNames; ++i)
    text.append(i == 0 ? "" : ", ").append(quoted(nameOfTensor(tensors[i])));
  if (count > kMostNames) text += ", ...";
}

// What the call is about: the node, the tensors, the graph.
std::string describe(const Arguments& arguments, const Program& program) {
  std::string text(arguments.function->name);
  for (std::size_t i = 0; i < arguments.values.size(); ++i) {
    const Value& value = arguments.values[i];
    if (value.bits == 0) continue;
    switch (value.argument->kind) {
      case ArgumentKind::kOpConfig: {
        const auto& op = value.pointer<const Kiv_OpConfig_t>()->v1;
        text.append(" of node ").append(quoted(op.name));
        if (op.typeName != nullptr)
          text.append(" (").append(shortened(op.typeName)).append(")");
        appendTensors(text, "inputs", op.inputTensors, op.numInputs);
        appendTensors(text, "outputs", op.outputTensors, op.numOutputs);
        break;
      }
      case ArgumentKind::kTensor:
        text.append(" of tensor ")
            .append(quoted(nameOfTensor(*value.pointer<const Kiv_Tensor_t>())));
        break;
      case ArgumentKind::kTensors:
        appendTensors(text, value.argument->name,
                      value.pointer<const Kiv_Tensor_t>(),
                      static_cast<std::uint32_t>(arguments.values[i + 1].bits));
        break;
      case ArgumentKind::kText:
        text.append(" of graph ").append(quoted(value.pointer<const char>()));
        break;
      case ArgumentKind::kGraph: {
        const std::string name(program.graphName(value.variable));
        text.append(" in graph ").append(quoted(name.c_str()));
        break;
      }
      default:
        break;
    }
  }
  return text;
}

bool isFailure(Kiv_ErrorHandle_t status) {
  return status != KIV_SUCCESS && status != KIV_COMMON_ERROR_NOT_SUPPORTED;
}

// One run through the calls.
class Run {
 public:
  Run(const Recording& recording, std::span<std::byte> data,
      const Backend& backend, const ReplayOptions& options,
      ReplayObserver& observer)
      : recording_(recording),
        table_(backend.table()),
        options_(options),
        observer_(observer),
        program_(recording, data) {}

  ReplayResult make() {
    createLogger();
    const std::size_t count = recording_.calls().size();
    for (std::size_t i = 0; i < count && !isOver_; ++i) {
      if (!mayCall()) break;
      makeCall(i);
    }
    freeLogger();
    result_.error = error_;
    return std::move(result_);
  }

 private:
  bool mayCall() const {
    return !isFailure(error_) || options_.continueOnError;
  }

  void print(const std::string& line) const {
    if (options_.print) return options_.print(line);
    std::printf("%s\n", line.c_str());
  }

  // As the program's macro has it.
  void validate(Kiv_ErrorHandle_t status, std::uint32_t line) {
    error_ = status;
    if (status == KIV_SUCCESS) return;
    const std::string where = std::to_string(line);
    if (status == KIV_COMMON_ERROR_NOT_SUPPORTED) {
      print("WARNING! Line " + where + " KIV feature/API not supported");
      return;
    }
    if (firstError_ == KIV_SUCCESS) firstError_ = status;
    // Printed with %d there.
    print("ERROR! Line " + where + " with error value: " +
          std::to_string(static_cast<std::int32_t>(status)));
  }

  void createLogger() {
    if (!options_.logLevel) return;
    Kiv_LogHandle_t handle = nullptr;
    validate(table_.logCreate(nullptr, *options_.logLevel, &handle),
             recording_.header().logCreateLine);
    logHandle_ = handle;
    program_.setLogHandle(handle);
  }

  void freeLogger() {
    if (options_.logLevel && !isOver_ && mayCall())
      validate(table_.logFree(logHandle_), recording_.footer().logFreeLine);
    if (options_.continueOnError && isFailure(firstError_))
      error_ = firstError_;
  }

  void makeCall(std::size_t index) {
    if (auto problem = program_.begin(index, arguments_); problem) {
      result_.fault = std::move(problem);
      isOver_ = true;
      return;
    }
    const bool isExecution =
        arguments_.function == &format::calls::kGraphExecute;
    observer_.prepareCall(index, arguments_);
    if (isExecution) repeatCall(index, options_.warmup, true);
    repeatCall(index, isExecution ? options_.repeat : 1, false);
  }

  void repeatCall(std::size_t index, std::uint32_t count, bool isWarmup) {
    for (std::uint32_t i = 0; i < count && !isOver_ && mayCall(); ++i)
      makeOnce(index, i, isWarmup);
  }

  void makeOnce(std::size_t index, std::uint32_t repetition, bool isWarmup) {
    if (!observer_.beforeCall(index, arguments_)) {
      isOver_ = true;
      return;
    }
    const auto start = std::chrono::steady_clock::now();
    const Kiv_ErrorHandle_t status = invoke(table_, arguments_);
    const auto duration = std::chrono::steady_clock::now() - start;
    ++result_.callsMade;
    program_.end(index);
    if (isExpected(index, status)) {
      ++result_.callsFailedAgain;
    } else {
      validate(status, recording_.calls()[index].line);
      count(index, status);
    }
    observer_.afterCall(
        {index, arguments_, repetition, isWarmup, status, duration});
    if (status == KIV_SUCCESS) save();
  }

  bool isExpected(std::size_t index, Kiv_ErrorHandle_t status) const {
    const auto found = options_.expectedCodes.find(index);
    return found != options_.expectedCodes.end() && found->second == status;
  }

  void count(std::size_t index, Kiv_ErrorHandle_t status) {
    if (status == KIV_COMMON_ERROR_NOT_SUPPORTED) ++result_.callsNotSupported;
    if (!isFailure(status)) return;
    ++result_.callsFailed;
    if (result_.failures.size() == kMostFailures) return;
    const Call& call = recording_.calls()[index];
    Problem problem = recording_.problemAt(
        call.span.begin, describe(arguments_, program_) + " failed with " +
                             describeStatus(status));
    problem.line = call.line;
    problem.column = 0;
    result_.failures.push_back({index, status, std::move(problem)});
  }

  // The name comes from the recording: no directory stands in it.
  void save() {
    const auto output = program_.output();
    if (!output || !options_.outputDirectory) return;
    const auto path = *options_.outputDirectory / std::string(output->name);
    const bool isPlain =
        output->name.find_first_of("/\\:") == std::string_view::npos &&
        output->name != "." && output->name != "..";
    std::ofstream file;
    if (isPlain) file.open(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(output->bytes.data()),
               static_cast<std::streamsize>(output->bytes.size()));
    file.close();
    if (!isPlain || !file) {
      Problem problem;
      problem.file = path.string();
      problem.message = "the context's binary cannot be saved there";
      result_.fault = std::move(problem);
      isOver_ = true;
      return;
    }
    observer_.saved(path);
  }

  const Recording& recording_;
  const KivInterface_Implementation_t& table_;
  const ReplayOptions& options_;
  ReplayObserver& observer_;
  Program program_;
  Arguments arguments_;
  ReplayResult result_;
  Kiv_LogHandle_t logHandle_ = nullptr;
  Kiv_ErrorHandle_t error_ = KIV_SUCCESS;
  Kiv_ErrorHandle_t firstError_ = KIV_SUCCESS;
  bool isOver_ = false;
};

Problem problemOfFile(const std::string& file, std::string message) {
  Problem problem;
  problem.file = file;
  problem.message = std::move(message);
  return problem;
}

}  // namespace

int ReplayResult::exitStatus() const {
  if (refusal || fault) return 1;
  if (!isFailure(error)) return 0;
  const auto status = static_cast<int>(static_cast<std::uint32_t>(error));
  return (status & 0xff) == 0 ? 1 : status;
}

std::vector<Problem> Replayer::check() const {
  std::vector<Problem> problems;
  for (const Problem& problem : recording_.problems())
    if (problem.severity == Severity::kError) problems.push_back(problem);
  const std::string model = recording_.modelPath().filename().string();
  const std::uint64_t wanted = recording_.dataSize();
  const std::uint64_t there = data_.size();
  if (there < wanted || (there > wanted && recording_.isComplete())) {
    problems.push_back(
        problemOfFile(std::string(recording_.header().dataFile),
                      std::string("the data file is too ") +
                          (there < wanted ? "short" : "long") +
                          ": the calls read " + std::to_string(wanted) +
                          " bytes, it has " + std::to_string(there)));
  }
  for (const std::string_view function : backend_.missingFunctions(recording_))
    problems.push_back(problemOfFile(
        backend_.path().string(), "the backend lacks " + std::string(function) +
                                      ", which the recording calls"));
  return problems;
}

ReplayResult Replayer::run(const ReplayOptions& options,
                           ReplayObserver* observer) {
  ReplayResult result;
  const std::vector<Problem> problems = check();
  if (!problems.empty()) {
    result.refusal = problems.front();
    return result;
  }
  if (options.logLevel && (backend_.table().logCreate == nullptr ||
                           backend_.table().logFree == nullptr)) {
    result.refusal =
        problemOfFile(backend_.path().string(), "the backend has no logger");
    return result;
  }
  ReplayObserver none;
  return Run(recording_, data_, backend_, options,
             observer == nullptr ? none : *observer)
      .make();
}

}  // namespace kiv::recording
