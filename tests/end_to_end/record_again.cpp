// record_again RECORDING SAVER DIRECTORY
//
// Makes a recording's calls through the recorder, which puts a recording of its
// own into the directory. What the recorder refuses is passed over, as it was
// for the client.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Saver/KivSaver.h"
#include "recording/replayer.h"

namespace {

namespace rec = kiv::recording;

// The library is loaded already: this is another reference to it.
bool setOptions(const std::filesystem::path& library,
                const std::string& directory, bool isForGpu) {
  std::string why;
  const auto loaded = rec::Library::load(library, why);
  const auto initialize = reinterpret_cast<KivSaver_InitializeFn_t>(
      loaded ? loaded->find("KivSaver_initialize") : nullptr);
  if (initialize == nullptr) return false;
  KivSaver_Config_t output{};
  output.option = KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY;
  output.outputDirectory = directory.c_str();
  KivSaver_Config_t backend{};
  backend.option = KIV_SAVER_CONFIG_OPTION_BACKEND_ID;
  backend.backendId = isForGpu ? KIV_BACKEND_ID_GPU : KIV_BACKEND_ID_UNSET;
  const KivSaver_Config_t* options[] = {&output, &backend, nullptr};
  return initialize(options) == KIV_SUCCESS;
}

int fail(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return fail("record_again RECORDING SAVER DIRECTORY");
  const rec::OpenResult opened = rec::Recording::open(argv[1]);
  if (opened.recording == nullptr) return fail(toString(opened.problem));
  const rec::Recording& recording = *opened.recording;
  for (const rec::Problem& problem : recording.problems())
    std::fprintf(stderr, "%s\n", toString(problem).c_str());
  std::string why;
  const auto data =
      rec::MappedFile::open(recording.dataPath().value_or(""),
                            rec::MappedFile::Writes::kPrivate, why);
  if (!data) return fail("data file: " + why);
  const auto saver = rec::Backend::load(argv[2], why);
  if (!saver) return fail(why);
  const auto& includes = recording.header().includes;
  const bool isForGpu =
      std::ranges::find(includes, "GPU/KivGpuGraph.h") != includes.end();
  if (!setOptions(argv[2], argv[3], isForGpu))
    return fail("the recorder does not take its options");
  rec::ReplayOptions options;
  options.continueOnError = true;
  options.print = [](const std::string&) {};
  const auto result =
      rec::Replayer(recording, data->bytes(), *saver).run(options);
  if (result.refusal) return fail(toString(*result.refusal));
  if (result.fault) return fail(toString(*result.fault));
  return 0;
}
