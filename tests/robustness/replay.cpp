#include "robustness/replay.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace kiv::test {
namespace {

Lines linesOf(const std::filesystem::path& path) {
  Lines lines;
  std::istringstream text(readFile(path));
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

bool shell(const std::string& command, const std::filesystem::path& log) {
  const std::string redirected =
      "{ " + command + "; } >" + log.string() + " 2>&1";
  if (std::system(redirected.c_str()) == 0) return true;
  ADD_FAILURE() << command << "\n" << readFile(log);
  return false;
}

}  // namespace

Lines callsOf(const std::function<void(const Api&)>& client) {
  const TempDirectory temp;
  const auto trace = temp.path() / "trace";
  setenv("KIV_TRACER_OUTPUT", trace.c_str(), 1);
  void* library = dlopen(KIV_TRACER_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  reinterpret_cast<KivInterface_GetProvidersFn_t>(
      dlsym(library, "KivInterface_getProviders"))(&providers, &count);
  client(providers[0]->KIV_INTERFACE_VER_NAME);
  dlclose(library);
  return linesOf(trace);
}

Lines replay(const std::filesystem::path& recording) {
  const TempDirectory temp;
  const std::string work = temp.path().string() + "/";
  const std::filesystem::path tracer = KIV_TRACER_LIBRARY;
  const std::string build =
      std::string(KIV_COMPLETE_RECORDING) + " " +
      (recording / "saver_output.c").string() + " " + work + "program.c " +
      work + "size.h && " KIV_COMPILER " " + work + "program.c -o " + work +
      "program " + tracer.string() + " -Wl,-rpath," +
      tracer.parent_path().string();
  // All records are variables of one function.
  const std::string run = "ulimit -s unlimited; cd " + recording.string() +
                          " && KIV_TRACER_OUTPUT=" + work + "trace " + work +
                          "program";
  if (!shell(build, work + "log") || !shell(run, work + "log")) return {};
  return linesOf(temp.path() / "trace");
}

std::string dataText(const std::string& bytes) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : bytes)
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%zu:%016llx", bytes.size(),
                static_cast<unsigned long long>(hash));
  return text.data();
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + part.size()))
    ++count;
  return count;
}

std::size_t bytesRead(const std::string& modelText) {
  std::size_t bytes = 0;
  for (std::size_t at = modelText.find("fread("); at != std::string::npos;
       at = modelText.find("fread(", at + 1)) {
    std::size_t size = 0;
    std::size_t count = 0;
    std::sscanf(&modelText[at], "fread(%*[^,], %zu, %zu", &size, &count);
    bytes += size * count;
  }
  return bytes;
}

void expectInChild(const std::function<void()>& body) {
  EXPECT_EQ(inChild([&] {
              body();
              return ::testing::Test::HasFailure() ? 1 : 0;
            }),
            0);
}

void runSession(const Api& api, const Caller& make) {
  Kiv_BackendHandle_t backend = nullptr;
  Kiv_DeviceHandle_t device = nullptr;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;
  make([&] { return api.backendCreate(nullptr, nullptr, &backend); });
  make([&] { return api.deviceCreate(nullptr, nullptr, &device); });
  make([&] { return api.profileCreate(backend, 1, &profile); });
  make([&] { return api.contextCreate(backend, device, nullptr, &context); });
  make([&] { return api.graphCreate(context, "g", nullptr, &graph); });
  std::string weights(700, 'w');
  std::string input = "input";
  Kiv_Tensor_t tensors[] = {tensorWithData(weights.data(), 700), emptyTensor()};
  tensors[0].v1.name = "weights";
  tensors[1].v1.name = "between";
  make([&] { return api.tensorCreateContextTensor(context, &tensors[0]); });
  make([&] { return api.tensorCreateGraphTensor(graph, &tensors[1]); });
  Kiv_OpConfig_t op = emptyOpConfig("node");
  op.v1.numInputs = 1;
  op.v1.inputTensors = &tensors[0];
  op.v1.numOutputs = 1;
  op.v1.outputTensors = &tensors[1];
  make([&] { return api.graphAddNode(graph, op); });
  make([&] { return api.graphFinalize(graph, profile, nullptr); });
  Kiv_Tensor_t read = tensorWithData(input.data(), 5);
  make([&] {
    return api.graphExecute(graph, &read, 1, nullptr, 0, profile, nullptr);
  });
  make([&] { return api.propertyHasCapability(3); });
  make([&] { return api.profileFree(profile); });
  make([&] { return api.contextFree(context, nullptr); });
  make([&] { return api.deviceFree(device); });
  make([&] { return api.backendFree(backend); });
}

}  // namespace kiv::test
