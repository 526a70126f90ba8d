#pragma once

namespace kiv::test {

// Under sanitizers, where everything takes longer, a test does less.
inline constexpr bool kIsSanitized = KIV_IS_SANITIZED;

}  // namespace kiv::test
