// The second header needs the first.
// clang-format off
#include <windows.h>
#include <evntprov.h>
// clang-format on

#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <utility>

#include "platform/trace_events.h"
#include "platform/trace_logging.h"

namespace kiv::platform {
namespace {

// Constants that not every version of the headers has.
constexpr auto kSetProviderTraits = std::bit_cast<EVENT_INFO_CLASS>(2U);
constexpr ULONG kDisableProvider = 0;
constexpr ULONG kEnableProvider = 1;
constexpr ULONG kPlainData = 0;
constexpr ULONG kEventMetadata = 1;
constexpr ULONG kProviderMetadata = 2;

// The registered provider, from the library's loading to its unloading.
class Provider {
 public:
  Provider()
      : providerMetadata_(trace_logging::providerMetadata()),
        eventMetadata_(trace_logging::eventMetadata()) {
    GUID guid{};
    const auto bytes = trace_logging::providerGuid();
    std::memcpy(&guid, bytes.data(), sizeof(guid));
    registered_ = ::EventRegister(&guid, onEnable, this, &handle_);
    if (registered_ != ERROR_SUCCESS) return;
    // Tells the system the provider's name. Where that fails events are decoded
    // all the same, by the metadata that goes with each.
    named_ = ::EventSetInformation(
        handle_, kSetProviderTraits, providerMetadata_.data(),
        static_cast<ULONG>(providerMetadata_.size()));
  }
  // What the system says when the provider goes; nobody is left to be told.
  ~Provider() { unregister(); }
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;

  // The system's answers. A provider that is not registered is never enabled,
  // and that is all: the recording does not depend on it.
  ULONG registered() const { return registered_; }
  ULONG named() const { return named_; }
  ULONG unregister() {
    enabledLevel_ = 0;
    return handle_ == 0 ? ERROR_INVALID_HANDLE
                        : ::EventUnregister(std::exchange(handle_, 0));
  }

  // What a disabled provider costs: a load and a compare.
  bool isEnabled() const {
    return enabledLevel_.load(std::memory_order_relaxed) >=
           trace_logging::kLevel;
  }

  ULONG write(const char* text) {
    const EVENT_DESCRIPTOR event = describeEvent();
    Data data = describeData(text);
    return ::EventWriteTransfer(handle_, &event, nullptr, nullptr,
                                static_cast<ULONG>(data.size()), data.data());
  }

  static EVENT_DESCRIPTOR describeEvent() {
    EVENT_DESCRIPTOR event{};
    event.Channel = trace_logging::kChannel;
    event.Level = trace_logging::kLevel;
    return event;
  }

  // Pointers to the text and to metadata of this object.
  using Data = std::array<EVENT_DATA_DESCRIPTOR, 3>;
  Data describeData(const char* text) const {
    return {
        describe(kProviderMetadata, providerMetadata_.data(),
                 providerMetadata_.size()),
        describe(kEventMetadata, eventMetadata_.data(), eventMetadata_.size()),
        describe(kPlainData, text, std::strlen(text) + 1)};
  }

  // Level 0 of a listener means every level. Of the further controls none
  // changes who listens.
  static void NTAPI onEnable(LPCGUID, ULONG control, UCHAR level, ULONGLONG,
                             ULONGLONG, PEVENT_FILTER_DESCRIPTOR,
                             PVOID context) {
    constexpr int kEveryLevel = 0xFF;
    auto* provider = static_cast<Provider*>(context);
    if (control == kDisableProvider) provider->enabledLevel_ = 0;
    if (control == kEnableProvider)
      provider->enabledLevel_ = level == 0 ? kEveryLevel : level;
  }

 private:
  static EVENT_DATA_DESCRIPTOR describe(ULONG type, const void* bytes,
                                        std::size_t size) {
    EVENT_DATA_DESCRIPTOR descriptor{};
    ::EventDataDescCreate(&descriptor, bytes, static_cast<ULONG>(size));
    descriptor.Reserved = type;
    return descriptor;
  }

  std::vector<std::uint8_t> providerMetadata_;
  const std::vector<std::uint8_t> eventMetadata_;
  REGHANDLE handle_ = 0;
  ULONG registered_ = ERROR_NOT_READY;
  ULONG named_ = ERROR_NOT_READY;
  std::atomic<int> enabledLevel_ = 0;
};

Provider provider;

}  // namespace

void traceMessage(const char* text) {
  if (provider.isEnabled()) provider.write(text);
}

}  // namespace kiv::platform
