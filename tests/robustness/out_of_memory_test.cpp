#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <thread>

#include "golden/golden_session.h"
#include "robustness/failing_memory.h"
#include "robustness/in_child.h"
#include "robustness/replayed_calls.h"

// Each allocation of the golden session fails in its turn. The call that needed
// it is refused and leaves nothing, the same call then succeeds, and the
// recording makes the calls that it makes with memory enough.
namespace kiv::test {
namespace {

constexpr Code kOutOfMemory = 1002;
constexpr Code kNotStarted = 4000;

// Calls that say which object there was no memory for.
const std::map<std::size_t, std::string> kMessagesOfSlots = {
    {9, "1Could not create a new context"},
    {13, "1Could not create a new context"},
    {15, "1Could not create a new graph"},
    {16, "1Could not create a new graph"},
    {20, "1Could not create a new graph"},
    {23, "1Could not create a new context tensor"},
    {24, "1Could not create a new graph tensor"},
    {28, "1Could not create a new profile"},
    {40, "1Could not create a new device"},
    {55, "1Could not create a new context"}};

// The messages of a call, without an allocation.
struct Logged {
  int count = 0;
  std::array<char, 256> last = {};
} logged;

void note(const char* format, KivLog_Level_t level, uint64_t, va_list values) {
  ++logged.count;
  logged.last[0] = static_cast<char>('0' + level);
  std::vsnprintf(&logged.last[1], logged.last.size() - 1, format, values);
}

// Stands between a session and the library: lets the allocation `first` of all
// calls fail and `count` - 1 behind it as long as the call lasts, and makes the
// call again if it was refused.
class Repeater {
 public:
  Repeater(std::size_t first, std::size_t count)
      : first_(first), count_(count) {}

  template <typename Call>
  Code make(std::size_t slot, const Call& call) {
    const bool isNext = first_ > asked_;
    Code code = 0;
    logged = {};
    {
      const FailingMemory failing(isNext ? first_ - asked_ : 1,
                                  isNext ? count_ : 0);
      code = call();
    }
    asked_ += FailingMemory::asked();
    if (!isNext || !hasFailed() || code == 0 || code == 4950) return code;
    SCOPED_TRACE("slot " + std::to_string(slot));
    EXPECT_TRUE(code == kOutOfMemory || code == kNotStarted) << code;
    const auto message = kMessagesOfSlots.find(slot);
    if (code == kOutOfMemory && message != kMessagesOfSlots.end()) {
      EXPECT_EQ(logged.count, 1);
      EXPECT_EQ(logged.last.data(), message->second);
    }
    return call();
  }

  bool hasFailed() const { return asked_ >= first_; }

 private:
  const std::size_t first_;
  const std::size_t count_;
  std::size_t asked_ = 0;
};

Repeater* repeater = nullptr;
const Api* real = nullptr;

// The function of a slot, called through the repeater.
template <auto Slot, typename Function>
struct Repeated;
template <auto Slot, typename... Arguments>
struct Repeated<Slot, Code (*)(Arguments...)> {
  static Code call(Arguments... arguments) {
    const auto slot = reinterpret_cast<void* const*>(&(real->*Slot)) -
                      reinterpret_cast<void* const*>(real);
    return repeater->make(static_cast<std::size_t>(slot),
                          [&] { return (real->*Slot)(arguments...); });
  }
};

template <auto... Slots>
Api repeating() {
  Api api{};
  ((api.*Slots =
        Repeated<Slots, std::remove_cvref_t<decltype(api.*Slots)>>::call),
   ...);
  return api;
}

// The slots of the golden session.
Api repeatingApi() {
  return repeating<
      &Api::propertyHasCapability, &Api::backendCreate, &Api::backendSetConfig,
      &Api::backendRegisterOpPackage, &Api::backendGetSupportedOperations,
      &Api::backendValidateOpConfig, &Api::backendFree, &Api::contextCreate,
      &Api::contextSetConfig, &Api::contextGetBinarySize,
      &Api::contextGetBinary, &Api::contextCreateFromBinary, &Api::contextFree,
      &Api::graphCreate, &Api::graphCreateSubgraph, &Api::graphSetConfig,
      &Api::graphAddNode, &Api::graphFinalize, &Api::graphRetrieve,
      &Api::graphExecute, &Api::tensorCreateContextTensor,
      &Api::tensorCreateGraphTensor, &Api::profileCreate,
      &Api::profileSetConfig, &Api::profileGetEvents, &Api::profileGetSubEvents,
      &Api::profileGetEventData, &Api::profileGetExtendedEventData,
      &Api::profileFree, &Api::deviceGetPlatformInfo,
      &Api::deviceGetInfrastructure, &Api::deviceCreate, &Api::deviceSetConfig,
      &Api::deviceGetInfo, &Api::deviceFree, &Api::contextValidateBinary,
      &Api::contextCreateFromBinaryWithSignal>();
}

// Runs `body` in a process of its own for each allocation, until none has
// failed there, and `check` behind each.
void failInTurn(const std::function<bool(std::size_t first)>& body,
                const std::function<void()>& check) {
  constexpr int kBehindLast = 77;
  int result = 0;
  std::size_t first = 0;
  while (result == 0) {
    SCOPED_TRACE("allocation " + std::to_string(++first));
    result = inChild([&] {
      const bool hasFailed = body(first);
      if (::testing::Test::HasFailure()) return 1;
      return hasFailed ? 0 : kBehindLast;
    });
    check();
  }
  EXPECT_EQ(result, kBehindLast) << "at allocation " << first;
  std::cout << first - 1 << " allocations\n";
}

// Recordings that differ are replayed.
void failInGoldenSession(std::size_t count) {
  setenv("KIV_TRACER_CUSTOM", "gpu", 1);
  const Lines made = callsOf([](const Api& api) { runGoldenSession(api); });
  const SaverLibrary saver;
  ASSERT_EQ(saver.initialize({backendOption(KIV_BACKEND_ID_GPU)}), 0U);
  std::set<std::string> recordings;
  const auto run = [&](std::size_t first) {
    Repeater failures(first, count);
    saver.api().logCreate(note, KIV_LOG_LEVEL_ERROR, nullptr);
    repeater = &failures;
    real = &saver.api();
    auto codes = runGoldenSession(repeatingApi());
    std::erase(codes, 4950U);
    EXPECT_EQ(codes, std::vector<Code>(codes.size()));
    return failures.hasFailed();
  };
  failInTurn(run, [&] {
    if (!recordings.insert(saver.modelText() + saver.data()).second) return;
    const Lines replayed = replayedCalls(saver.directory());
    const auto other = std::ranges::mismatch(replayed, made);
    EXPECT_TRUE(replayed == made)
        << "replayed: "
        << (other.in1 == replayed.end() ? "no more" : *other.in1);
  });
  unsetenv("KIV_TRACER_CUSTOM");
}

TEST(OutOfMemory, EachAllocationOfASessionFailsAlone) {
  failInGoldenSession(1);
}

TEST(OutOfMemory, EachAllocationOfASessionFailsWithAllBehindItInTheCall) {
  failInGoldenSession(FailingMemory::kAll);
}

// The first call of all opens the files. A thread gets memory for its
// thread-local variables with its own first call, if the library has any.
TEST(OutOfMemory, FirstCallOfAllIsNotStarted) {
  const SaverLibrary saver;
  const auto call = [&] { return saver.api().propertyHasCapability(1); };
  const auto run = [&](std::size_t first) {
    bool hasFailed = false;
    std::thread([&] {
      Code code = 0;
      {
        const FailingMemory failing(first, FailingMemory::kAll);
        code = call();
        hasFailed = FailingMemory::hasFailed();
      }
      // The start has not succeeded as long as a file is missing.
      const bool mayBeStarted = std::filesystem::exists(saver.dataPath());
      EXPECT_TRUE(code == 0 || code == kNotStarted ||
                  (code == kOutOfMemory && mayBeStarted))
          << code;
      EXPECT_EQ(call(), 0U);
    }).join();
    return hasFailed;
  };
  failInTurn(run, [&] { std::filesystem::remove_all(saver.directory()); });
}

// A switch of files is refused and tried again, or has succeeded.
TEST(OutOfMemory, SwitchOfFiles) {
  const SaverLibrary saver;
  const auto initialize =
      saver.library().function<KivSaver_InitializeFn_t>("KivSaver_initialize");
  const Option files = filesOption("b.c", "b.bin");
  const Option* list[] = {&files, nullptr};
  const auto run = [&](std::size_t first) {
    EXPECT_EQ(saver.api().propertyHasCapability(1), 0U);
    Code code = 0;
    {
      const FailingMemory failing(first, FailingMemory::kAll);
      code = initialize(list);
    }
    const bool hasFailed = FailingMemory::hasFailed();
    EXPECT_TRUE(code == 0 || code == kOutOfMemory || code == 4999) << code;
    EXPECT_EQ(code == 0 ? 0U : initialize(list), 0U);
    EXPECT_EQ(saver.api().propertyHasCapability(2), 0U);
    return hasFailed;
  };
  failInTurn(run, [&] {
    for (const char* name : {"saver_output.c", "b.c"}) {
      const std::string text = readFile(saver.directory() / name);
      EXPECT_EQ(countOf(text, "Capability("), 1U);
      EXPECT_EQ(countOf(text, "fclose(fp)"), 1U);
    }
  });
}

}  // namespace
}  // namespace kiv::test
