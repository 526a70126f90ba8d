#include <cstring>

#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"

// Answers for the slots of functions that are not offered. They record nothing.
namespace kiv::api {
namespace {

using session::Session;

// The first 32-bit word of a record whose form is not known further.
template <typename Record>
std::uint32_t firstWord(const Record* record) {
  std::uint32_t word = 0;
  std::memcpy(&word, record, sizeof(word));
  return word;
}

}  // namespace

Code errorMessageStub() {
  return enter([](Session&) { return Status::kNotSupported; });
}

Code graphEnvironmentStub(Kiv_GraphHandle_t graph,
                          const KivGraph_EnvironmentDescriptor_t** descriptors,
                          uint32_t numDescriptors) {
  constexpr std::uint32_t kFirstUnknownVersion = 2;
  if (graph == nullptr) return toCode(Status::kGraphUnknown);
  if (descriptors == nullptr || numDescriptors == 0 ||
      *descriptors == nullptr ||
      firstWord(*descriptors) >= kFirstUnknownVersion)
    return toCode(Status::kGraphInvalidArgument);
  return toCode(Status::kNotSupported);
}

// The handle is not looked up.
Code graphPropertyStub(Kiv_GraphHandle_t graph,
                       KivGraph_Property_t** property) {
  return enter([&](Session&) {
    if (graph == nullptr) return fail(kGraphIsNull);
    if (property == nullptr) return Status::kGraphInvalidArgument;
    if (*property == nullptr) return Status::kOk;
    return firstWord(*property) != 0 ? Status::kGraphInvalidArgument
                                     : Status::kNotSupported;
  });
}

}  // namespace kiv::api
