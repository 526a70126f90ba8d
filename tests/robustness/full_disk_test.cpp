#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <optional>
#include <regex>
#include <set>

#include "robustness/replayed_calls.h"
#include "support/file_size_limit.h"
#include "support/sanitized.h"

// A disk that fills up costs the calls that did not fit, and no other.
namespace kiv::test {
namespace {

// Makes one call of a session, or repeats it.
using Caller = std::function<void(const std::function<Code()>& call)>;

// Nineteen calls: objects of all kinds, tensors with and without data, a node,
// an execution, and the frees.
void runSession(const Api& api, const Caller& make) {
  Kiv_BackendHandle_t backend = nullptr;
  Kiv_DeviceHandle_t device = nullptr;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;
  make([&] { return api.backendCreate(nullptr, nullptr, &backend); });
  make([&] { return api.backendSetConfig(backend, nullptr); });
  make([&] { return api.deviceCreate(nullptr, nullptr, &device); });
  make([&] { return api.profileCreate(backend, 1, &profile); });
  make([&] { return api.contextCreate(backend, device, nullptr, &context); });
  Kiv_ContextHandle_t fromBinary = nullptr;
  make([&] {
    return api.contextCreateFromBinary(backend, device, nullptr, "abc", 3,
                                       &fromBinary, nullptr);
  });
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
  make([&] { return api.backendValidateOpConfig(backend, op); });
  make([&] { return api.graphAddNode(graph, op); });
  make([&] { return api.graphFinalize(graph, profile, nullptr); });
  Kiv_Tensor_t read = tensorWithData(input.data(), 5);
  make([&] {
    return api.graphExecute(graph, &read, 1, nullptr, 0, profile, nullptr);
  });
  make([&] { return api.propertyHasCapability(3); });
  make([&] { return api.profileGetEvents(profile, nullptr, nullptr); });
  make([&] { return api.profileFree(profile); });
  make([&] { return api.contextFree(context, nullptr); });
  make([&] { return api.deviceFree(device); });
  make([&] { return api.backendFree(backend); });
}

// What runSession's calls return when their text has no room. A tensor whose
// text is lost is no failure.
Code textCodeOf(std::size_t call) {
  constexpr Code kCodes[] = {4999,  4999,  14999, 12999, 5999, 5999, 5999,
                             0,     0,     4999,  4999,  5999, 5999, 1999,
                             12999, 12999, 5999,  14999, 4999};
  return kCodes[call];
}
// The same for the bytes of a context, of a tensor and of an execution.
Code dataCodeOf(std::size_t call) {
  if (call == 5) return 5005;
  return call == 7 ? 0 : 5999;
}

using CodeOf = Code (*)(std::size_t call);

// Of a profile or a context.
bool isFree(std::size_t call) { return call == 15 || call == 16; }

// Makes the calls of a session. The one that finds no room must leave both
// files as they were; then room is made and it is made again.
class FullDiskCaller {
 public:
  FullDiskCaller(const SaverLibrary& saver, CodeOf expected,
                 std::function<void()> makeRoom)
      : saver_(saver), expected_(expected), makeRoom_(std::move(makeRoom)) {}

  void operator()(const std::function<Code()>& call) {
    const std::size_t number = made_++;
    const auto text = file_size(saver_.modelPath());
    const auto data = file_size(saver_.dataPath());
    const Code code = call();
    if (code == 0 && file_size(saver_.modelPath()) > text) return;
    EXPECT_FALSE(refused_) << "one call has found no room before";
    refused_ = number;
    EXPECT_EQ(code, expected_(number));
    EXPECT_EQ(file_size(saver_.modelPath()), text);
    EXPECT_EQ(file_size(saver_.dataPath()), data);
    makeRoom_();
    // A tensor is there for the client, and a freed object is gone, though the
    // recording knows nothing of it.
    isLost_ = code == 0 || isFree(number);
    EXPECT_EQ(isLost_ ? 0U : call(), 0U);
  }

  std::optional<std::size_t> refused() const { return refused_; }

  // The lines of a trace without that of a call that is not recorded.
  Lines withoutLost(Lines calls) const {
    if (isLost_) calls.erase(calls.begin() + static_cast<int>(*refused_));
    return calls;
  }

 private:
  const SaverLibrary& saver_;
  const CodeOf expected_;
  const std::function<void()> makeRoom_;
  std::size_t made_ = 0;
  std::optional<std::size_t> refused_;
  bool isLost_ = false;
};

// Ids are those of the tensors that a backend knows of.
Lines withoutIds(Lines lines) {
  static const std::regex id(R"(\bid=\d+)");
  for (std::string& line : lines) line = std::regex_replace(line, id, "id");
  return lines;
}

// The files may not grow beyond each size in turn that they go through. With
// `ahead` bytes of data before the session, the data file is the longer one
// and the first to be full.
void limitAtEachSize(std::size_t ahead, std::size_t step) {
  const std::string bytes(ahead, 'x');
  const auto begin = [&](const SaverLibrary& saver) {
    EXPECT_EQ(saver.api().contextValidateBinary(nullptr, nullptr, nullptr,
                                                bytes.data(), bytes.size()),
              0U);
    return ahead == 0 ? saver.modelText().size() : saver.data().size();
  };
  std::size_t first = 0;
  std::size_t last = 0;
  {
    const SaverLibrary saver;
    first = begin(saver);
    runSession(saver.api(), [](const std::function<Code()>& call) {
      EXPECT_EQ(call(), 0U);
    });
    last = ahead == 0 ? saver.modelText().size() : saver.data().size();
  }
  const Lines calls = callsOf([](const Api& api) {
    runSession(api, [](const std::function<Code()>& call) { call(); });
  });
  std::set<std::size_t> replayed;
  std::size_t limits = 0;
  for (std::size_t limit = first; limit < last; limit += step, ++limits) {
    SCOPED_TRACE("limit " + std::to_string(limit));
    SaverLibrary saver;
    begin(saver);
    std::optional<FileSizeLimit> full(limit);
    FullDiskCaller caller(saver, ahead == 0 ? textCodeOf : dataCodeOf,
                          [&] { full.reset(); });
    runSession(saver.api(), std::ref(caller));
    full.reset();
    ASSERT_TRUE(caller.refused());
    saver.unload();
    ASSERT_EQ(bytesRead(saver.modelText()), saver.data().size());
    // One recording is replayed for each call that found no room.
    if (!replayed.insert(*caller.refused()).second) continue;
    Lines found = withoutIds(replayedCalls(saver.directory()));
    if (!found.empty()) found.erase(found.begin());
    EXPECT_EQ(found, withoutIds(caller.withoutLost(calls)));
    if (::testing::Test::HasFailure()) return;
  }
  std::cout << limits << " limits, " << replayed.size() << " replayed\n";
}

TEST(FullDisk, ModelFileIsFullAtEachByteOfASession) {
  limitAtEachSize(0, kIsSanitized ? 97 : 1);
}

TEST(FullDisk, DataFileIsFullAtEachByteOfASession) {
  limitAtEachSize(30'000, kIsSanitized ? 97 : 1);
}

// A tensor whose text cannot be written is there for the client, but nothing
// refers to it; an object that was to be freed is gone; an execution's number
// is used up.
TEST(FullDisk, WhatAFailedCallLeavesBehind) {
  StartedSession c;
  const std::string text = c.saver.modelText();
  Kiv_Tensor_t tensor = emptyTensor();
  Kiv_ProfileHandle_t profile = c.profile;
  Kiv_BackendHandle_t backend = nullptr;
  {
    const FileSizeLimit full(text.size() + 20);
    EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), 0U);
    EXPECT_EQ(c.api.profileFree(profile), 12999U);
    EXPECT_EQ(c.execute(c.graph, {tensor}), 5999U);
    EXPECT_EQ(c.api.backendCreate(nullptr, nullptr, &backend), 4999U);
  }
  EXPECT_EQ(backend, nullptr);
  EXPECT_EQ(tensor.v1.id, 1U);
  EXPECT_EQ(c.saver.modelText(), text);
  EXPECT_EQ(c.api.profileFree(profile), 12000U);
  EXPECT_EQ(c.execute(c.graph, {tensor}), 0U);
  const std::string execution = c.newText();
  EXPECT_EQ(execution.find("g_tensor_0"), std::string::npos);
  EXPECT_NE(execution.find("g_inputTensors_1"), std::string::npos);
  EXPECT_EQ(c.api.backendCreate(nullptr, nullptr, &backend), 0U);
  EXPECT_EQ(backend, reinterpret_cast<void*>(2)) << "no number is used up";
  {
    const FileSizeLimit full(text.size());
    EXPECT_EQ(c.api.contextFree(c.context, nullptr), 5999U);
  }
  EXPECT_EQ(c.api.contextFree(c.context, nullptr), 5002U);
}

// The context's calls that the sessions above do not make.
TEST(FullDisk, ContextCallsThatFindNoRoom) {
  StartedSession c;
  Kiv_ContextBinarySize_t size = 0;
  void* out = nullptr;
  const std::pair<std::function<Code()>, Code> calls[] = {
      {[&] { return c.api.contextSetConfig(c.context, nullptr); }, 0},
      {[&] { return c.api.contextGetBinarySize(c.context, &size); }, 4950},
      {[&] { return c.api.contextGetBinary(c.context, &size, 1, &size); },
       4950},
      {[&] {
         return c.api.contextValidateBinary(nullptr, nullptr, nullptr, "b", 1);
       },
       0},
      {[&] { return c.api.graphRetrieve(c.context, "other", &out); }, 0},
      {[&] {
         return c.api.contextCreateFromBinaryWithSignal(
             nullptr, nullptr, nullptr, "b", 1, &out, nullptr, nullptr);
       },
       0}};
  for (const auto& [call, code] : calls) {
    SCOPED_TRACE(&call - &calls[0].first);
    {
      const FileSizeLimit full(c.saver.modelText().size() + 20);
      EXPECT_EQ(call(), 5999U);
    }
    EXPECT_EQ(call(), code);
  }
  EXPECT_EQ(c.newData(), "bb");
  // The names of buffers are given back.
  const std::string text = c.newText();
  EXPECT_NE(text.find(" binaryBuffer_0["), std::string::npos);
}

}  // namespace
}  // namespace kiv::test
