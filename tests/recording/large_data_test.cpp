#include <gtest/gtest.h>
#include <sys/resource.h>

#include <regex>

#include "recording/replayer.h"
#include "support/files.h"
#include "support/records.h"
#include "support/saver_library.h"

namespace kiv::test {
namespace {

using namespace recording;

constexpr std::uintmax_t kGiB = std::uintmax_t{1} << 30;

// In KiB.
long largestMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Six tensors with a byte each.
void recordTensors(const SaverLibrary& saver) {
  const Objects objects = createObjects(saver.api());
  for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
    std::uint8_t data = 0;
    Kiv_Tensor_t tensor = tensorWithData(&data, sizeof data);
    tensor.v1.name = name;
    tensor.v1.type = KIV_TENSOR_TYPE_STATIC;
    ASSERT_EQ(saver.api().tensorCreateGraphTensor(objects.graph, &tensor),
              KIV_SUCCESS);
  }
}

// The same recording with a GiB for each byte.
std::string withLargeData(std::string text) {
  const std::string size = std::to_string(kGiB);
  text = std::regex_replace(text, std::regex(R"(_data\[1\])"),
                            "_data[" + size + "]");
  text = std::regex_replace(text, std::regex(", 1, 1, fp"),
                            ", 1, " + size + ", fp");
  return std::regex_replace(text, std::regex("_data, 1}"),
                            "_data, " + size + "}");
}

TEST(RecordingReplay, LargeDataIsMapped) {
  SaverLibrary saver;
  recordTensors(saver);
  saver.unload();
  writeFile(saver.modelPath(), withLargeData(saver.modelText()));
  std::filesystem::resize_file(saver.dataPath(), 6 * kGiB);

  const long before = largestMemory();
  const auto recording = Recording::open(saver.directory()).recording;
  ASSERT_EQ(recording->dataSize(), 6 * kGiB);
  std::string why;
  const auto data = MappedFile::open(*recording->dataPath(),
                                     MappedFile::Writes::kPrivate, why);
  ASSERT_TRUE(data) << why;
  const auto backend = Backend::load(KIV_IDLE_BACKEND, why);
  ASSERT_TRUE(backend) << why;
  const auto result =
      Replayer(*recording, data->bytes(), *backend).run(ReplayOptions{});
  EXPECT_FALSE(result.refusal || result.fault);
  EXPECT_EQ(result.exitStatus(), 0);
  EXPECT_LT(largestMemory() - before, 200 * 1024);
}

}  // namespace
}  // namespace kiv::test
