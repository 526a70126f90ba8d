// Kills a client again and again and looks at what it leaves:
//
//   kills LIBRARY KILLS KEPT DIRECTORY
//
// Every call that had returned must be in the recording whole, and of the next
// one nothing but its bytes, a part of its text behind all of these, or all of
// it. DIRECTORY gets the recording of a client that lives, "whole", and KEPT of
// the others, each with a file "calls" that counts its whole calls. KIV_SEED
// chooses the moments.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <thread>

#include "support/child_process.h"
#include "support/files.h"
#include "support/options.h"
#include "support/provider.h"
#include "support/records.h"

namespace {

namespace fs = std::filesystem;
using kiv::test::DynamicLibrary;
using Api = KivInterface_Implementation_t;
using Code = Kiv_ErrorHandle_t;

// The same calls each time. Some bring much data or much text, so that a kill
// can meet a write halfway.
void record(const Api& api, const std::function<void(Code)>& returned) {
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;
  returned(api.contextCreate(nullptr, nullptr, nullptr, &context));
  returned(api.graphCreate(context, "g", nullptr, &graph));
  std::vector<Kiv_ScaleOffset_t> scales(800, Kiv_ScaleOffset_t{0.1F, -5});
  std::string pattern;
  for (int i = 0; pattern.size() < 210'000; ++i) pattern += std::to_string(i);
  for (int round = 0; round < 32; ++round) {
    const auto size = static_cast<uint32_t>(round % 4 == 3 ? 200'000 : 100);
    std::string bytes = pattern.substr(static_cast<std::size_t>(round), size);
    Kiv_Tensor_t tensor = kiv::test::tensorWithData(bytes.data(), size);
    if (round % 4 == 1) {
      tensor.v1.quantizeParams.quantizationEncoding =
          KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
      tensor.v1.quantizeParams.axisScaleOffsetEncoding = {
          0, static_cast<uint32_t>(scales.size()), scales.data()};
    }
    returned(api.tensorCreateGraphTensor(graph, &tensor));
    Kiv_OpConfig_t node = kiv::test::emptyOpConfig("node");
    node.v1.numInputs = 1;
    node.v1.inputTensors = &tensor;
    returned(api.graphAddNode(graph, node));
    returned(api.graphExecute(graph, &tensor, 1, nullptr, 0, nullptr, nullptr));
    returned(api.propertyHasCapability(static_cast<uint32_t>(round)));
  }
  returned(api.contextFree(context, nullptr));
}

void recordInto(const DynamicLibrary& library, const std::string& directory,
                const std::function<void(Code)>& returned) {
  kiv::test::setOptions(library,
                        {kiv::test::directoryOption(directory.c_str())});
  record(kiv::test::interfaceOf(library), returned);
}

// The client that is killed: prints a byte for each call that has returned.
int recordUntilKilled(const std::string& library,
                      const std::string& directory) {
  const DynamicLibrary loaded(library);
  recordInto(loaded, directory, [](Code code) {
    std::putchar(code == KIV_SUCCESS ? '.' : '!');
    std::fflush(stdout);
  });
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

struct Recording {
  std::string text;
  std::string data;

  explicit Recording(const fs::path& directory)
      : text(kiv::test::readFile(directory / "saver_output.c")),
        data(kiv::test::readFile(directory / "params.bin")) {}
};

// Where both files of the recording that was not disturbed ended behind each of
// its calls; [0] is before the first.
struct Ends {
  std::vector<std::size_t> text = {0};
  std::vector<std::size_t> data = {0};
};

Ends recordUndisturbed(const std::string& library, const fs::path& directory) {
  Ends ends;
  const DynamicLibrary loaded(library);
  recordInto(loaded, directory.string(), [&](Code) {
    ends.text.push_back(fs::file_size(directory / "saver_output.c"));
    ends.data.push_back(fs::file_size(directory / "params.bin"));
  });
  return ends;
}

// What a kill left of the call that was under way.
struct Left {
  int nothing = 0;
  int bytes = 0;
  int partOfText = 0;
  int all = 0;
};

class Killer {
 public:
  Killer(std::string program, std::string library, fs::path directory,
         unsigned seed)
      : program_(std::move(program)),
        library_(std::move(library)),
        directory_(std::move(directory)),
        random_(seed),
        ends_(recordUndisturbed(library_, directory_ / "whole")),
        whole_(directory_ / "whole") {}

  // Lets a client record and kills it a moment after some call. False when the
  // recording is not as it must be.
  bool kill(const std::string& name, bool keep) {
    const fs::path directory = directory_ / name;
    kiv::test::ChildProcess client(
        {program_, "client", library_, directory.string()});
    std::size_t returned = 0;
    bool succeeded = true;
    const auto readOne = [&] {
      char byte = 0;
      const bool more = client.read(byte);
      if (more) ++returned;
      succeeded = succeeded && (!more || byte == '.');
      return more;
    };
    for (std::size_t after = upTo(lastCall()); returned < after;)
      if (!readOne()) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(upTo(300)));
    client.kill();
    while (readOne()) continue;
    const bool asExpected =
        succeeded && check(Recording(directory), returned, directory);
    if (asExpected && !keep) fs::remove_all(directory);
    return asExpected;
  }

  const Left& left() const { return left_; }

 private:
  std::size_t lastCall() const { return ends_.text.size() - 1; }
  std::size_t upTo(std::size_t last) {
    return std::uniform_int_distribution<std::size_t>(0, last)(random_);
  }

  bool check(const Recording& found, std::size_t returned,
             const fs::path& directory) {
    // The client may have died between a call and its byte.
    const std::size_t textSize = found.text.size();
    if (returned < lastCall() && textSize > ends_.text[returned + 1])
      ++returned;
    const std::size_t next = std::min(returned + 1, lastCall());
    const std::size_t dataSize = found.data.size();
    const bool anyText = textSize > ends_.text[returned];
    const bool allText = anyText && textSize == ends_.text[next];
    // The program's frame, before the first call, has no bytes.
    const bool needsData = anyText && (returned > 0 || allText);
    const bool asExpected =
        textSize >= ends_.text[returned] && textSize <= ends_.text[next] &&
        dataSize >= ends_.data[returned] && dataSize <= ends_.data[next] &&
        whole_.text.starts_with(found.text) &&
        whole_.data.starts_with(found.data) &&
        (!needsData || dataSize == ends_.data[next]);
    if (!asExpected) {
      std::cout << directory.string() << ": after " << returned << " calls "
                << textSize << " bytes of text, " << dataSize << " of data\n";
      return false;
    }
    if (allText) {
      ++left_.all;
    } else if (anyText) {
      ++left_.partOfText;
    } else if (dataSize > ends_.data[returned]) {
      ++left_.bytes;
    } else {
      ++left_.nothing;
    }
    kiv::test::writeFile(directory / "calls",
                         std::to_string(allText ? next : returned));
    return true;
  }

  const std::string program_;
  const std::string library_;
  const fs::path directory_;
  std::mt19937 random_;
  const Ends ends_;
  const Recording whole_;
  Left left_;
};

int killAgainAndAgain(char** argv) {
  const char* wanted = std::getenv("KIV_SEED");
  const auto seed = wanted == nullptr
                        ? std::random_device{}()
                        : static_cast<unsigned>(std::atoi(wanted));
  std::cout << "KIV_SEED=" << seed << '\n';
  const int kills = std::atoi(argv[2]);
  const int kept = std::atoi(argv[3]);
  Killer killer(argv[0], argv[1], argv[4], seed);
  for (int i = 0; i < kills; ++i)
    if (!killer.kill(std::to_string(i), i % (kills / kept) == 0)) return 1;
  const Left& left = killer.left();
  std::cout << kills << " kills left the calls that had returned, and of the "
            << "next nothing (" << left.nothing << "), bytes (" << left.bytes
            << "), part of its text (" << left.partOfText << "), all ("
            << left.all << ")\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && argv[1] == std::string("client"))
    return recordUntilKilled(argv[2], argv[3]);
  return argc == 5 ? killAgainAndAgain(argv) : 2;
}
