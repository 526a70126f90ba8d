#include "tracer_run.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace kiv::tracer::test {

std::filesystem::path freshPath() {
  static std::atomic<int> count = 0;
  return std::filesystem::temp_directory_path() /
         ("kiv_tracer_test_" + std::to_string(getpid()) + "_" +
          std::to_string(count++));
}

std::string contentOf(const std::filesystem::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

bool isLoaded() {
  void* library = dlopen(KIV_TRACER_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

TracerRun::TracerRun(const std::string& variable, const std::string& value)
    : output_(freshPath()), variable_(variable) {
  setenv("KIV_TRACER_OUTPUT", output_.c_str(), 1);
  if (!variable.empty()) setenv(variable.c_str(), value.c_str(), 1);
  library_ = dlopen(KIV_TRACER_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  const auto getProviders = reinterpret_cast<KivInterface_GetProvidersFn_t>(
      dlsym(library_, "KivInterface_getProviders"));
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  EXPECT_EQ(getProviders(&providers, &count), 0u);
  EXPECT_EQ(count, 1u);
  provider_ = providers[0];
}

TracerRun::~TracerRun() {
  unload();
  unsetenv(variable_.c_str());
  std::filesystem::remove(output_);
}

std::string TracerRun::text() const { return contentOf(output_); }

std::vector<std::string> TracerRun::lines() const {
  std::vector<std::string> lines;
  std::istringstream text(contentOf(output_));
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

std::string TracerRun::lastLine() const {
  const auto all = lines();
  return all.empty() ? "" : all.back();
}

void TracerRun::unload() {
  if (library_ != nullptr) dlclose(library_);
  library_ = nullptr;
}

}  // namespace kiv::tracer::test
