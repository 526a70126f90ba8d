#include "session/session.h"

#include <gtest/gtest.h>

namespace kiv::session::test {
namespace {

TEST(HandlesTest, ReverseTheBytesOfTheAddressUnderAMask) {
  const auto handleAt = [](std::uintptr_t address) {
    return handleOf(reinterpret_cast<const void*>(address));
  };
  EXPECT_EQ(handleAt(0x123456789ABC), 0xE6A6EEB7C4C0B487u);
  EXPECT_EQ(handleAt(0x0102030405060708), 0x523B90E4F4D1B686u);
  EXPECT_EQ(handleOf(nullptr), 0u);
  EXPECT_EQ(fromApi(toApi(0xE6A6EEB7C4C0B487u)), 0xE6A6EEB7C4C0B487u);
}

TEST(SessionTest, GraphsEndWithTheirContext) {
  Session session;
  const Handle handle = session.newContext();
  const auto context = session.contexts().find(handle);
  EXPECT_TRUE(context->reserveGraphName("g"));
  EXPECT_FALSE(context->reserveGraphName("g"));
  EXPECT_EQ(context->findGraph(std::string("g")), nullptr);
  context->dropGraphName("g");
  EXPECT_TRUE(context->reserveGraphName("g"));
  const Handle graph = session.registerGraph(
      *context, "g", std::make_shared<SaverGraph>("g", 0, nullptr));
  EXPECT_FALSE(context->reserveGraphName("g"));
  EXPECT_EQ(session.contextOfGraph(graph), context);
  EXPECT_EQ(context->findGraph(std::string("g")), session.findGraph(graph));
  EXPECT_TRUE(session.eraseContext(handle));
  EXPECT_FALSE(session.eraseContext(handle));
  EXPECT_EQ(session.findGraph(graph), nullptr);
  EXPECT_NE(context->findGraph(graph), nullptr) << "lives on while in use";
}

TEST(TensorRegistryTest, RefusesAnIdThatItHasAndLooksOutward) {
  const auto variable = [](const char* name) {
    return std::make_shared<Variable>(name, 0);
  };
  const auto outer = std::make_shared<TensorRegistry>("c", nullptr);
  TensorRegistry registry("g", outer);
  using Added = TensorRegistry::Added;
  EXPECT_EQ(outer->add(3, "x", variable("c_tensor_0")), Added::kYes);
  EXPECT_EQ(registry.add(1, "x", variable("g_tensor_0")), Added::kYes);
  EXPECT_EQ(registry.add(1, "x", variable("g_tensor_1")), Added::kNameExists);
  EXPECT_EQ(registry.add(1, "y", variable("g_tensor_1")), Added::kIdExists);
  EXPECT_EQ(registry.add(2, "x", nullptr), Added::kYes);
  EXPECT_EQ(registry.find(1)->name(), "g_tensor_0");
  EXPECT_EQ(registry.find(2), nullptr);
  EXPECT_EQ(registry.find(3)->name(), "c_tensor_0");
  EXPECT_EQ(outer->find(1), nullptr);
}

TEST(VariableTest, TellsItsFirstUseInEachForeignProgram) {
  const Variable used("x", 1);
  const struct {
    std::uint32_t program;
    bool first;
  } uses[] = {{1, false}, {2, true}, {2, false}, {3, true}, {3, false}};
  for (const auto& use : uses)
    EXPECT_EQ(used.isFirstForeignUse(use.program), use.first) << use.program;
}

}  // namespace
}  // namespace kiv::session::test
