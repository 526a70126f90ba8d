#include "session/session.h"

#include <gtest/gtest.h>

#include <thread>

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

TEST(BackendTableTest, CountsHandlesFromOne) {
  BackendTable backends;
  EXPECT_EQ(backends.add("backend_0", 0), 1u);
  EXPECT_EQ(backends.add("backend_1", 0), 2u);
  EXPECT_TRUE(backends.erase(1));
  EXPECT_FALSE(backends.erase(1));
  EXPECT_EQ(backends.add("backend_2", 0), 3u);
  EXPECT_EQ(backends.find(1), nullptr);
  EXPECT_EQ(backends.find(2)->variable().name(), "backend_1");
}

TEST(SessionTest, NamesObjectsByKind) {
  Session session;
  const Handle first = session.newContext();
  ASSERT_NE(first, 0u);
  EXPECT_EQ(session.contexts().find(first)->variable().name(), "context_0");
  EXPECT_TRUE(session.eraseContext(first));
  EXPECT_FALSE(session.eraseContext(first));
  const auto nameOf = [](const auto& object) {
    return object->variable().name();
  };
  EXPECT_EQ(nameOf(session.contexts().find(session.newContext())), "context_1");
  EXPECT_EQ(session.names().claim("context_1_tensor_0", Family::kGraph),
            "context_1_tensor_0_0");
  EXPECT_EQ(nameOf(session.devices().find(session.newDevice())), "device_0");
  EXPECT_EQ(nameOf(session.profiles().find(session.newProfile())), "profile_0");
  EXPECT_EQ(session.nextTensorId(), 1u);
  EXPECT_EQ(session.nextTensorId(), 2u);
}

TEST(SessionTest, FindsGraphsThroughTheirContextUntilItIsErased) {
  Session session;
  const Handle handles[] = {session.newContext(), session.newContext()};
  Handle graphs[2] = {};
  for (int i = 0; i < 2; ++i) {
    const auto context = session.contexts().find(handles[i]);
    EXPECT_TRUE(context->reserveGraphName("g"));
    EXPECT_FALSE(context->reserveGraphName("g"));
    EXPECT_EQ(context->findGraph(std::string("g")), nullptr);
    context->dropGraphName("g");
    EXPECT_TRUE(context->reserveGraphName("g"));
    graphs[i] = session.registerGraph(
        *context, "g",
        std::make_shared<SaverGraph>("g_" + std::to_string(i), 0, nullptr));
    EXPECT_FALSE(context->reserveGraphName("g"));
    EXPECT_EQ(session.contextOfGraph(graphs[i]), context);
    EXPECT_EQ(context->findGraph(std::string("g")),
              session.findGraph(graphs[i]));
  }
  const auto used = session.contexts().find(handles[0]);
  EXPECT_TRUE(session.eraseContext(handles[0]));
  EXPECT_EQ(session.findGraph(graphs[0]), nullptr);
  EXPECT_EQ(session.contextOfGraph(graphs[0]), nullptr);
  EXPECT_NE(used->findGraph(graphs[0]), nullptr) << "lives on while in use";
  EXPECT_EQ(session.findGraph(graphs[1])->variable().name(), "g_1");
  EXPECT_EQ(session.findGraph(0), nullptr);
}

TEST(SessionTest, ManyThreadsGetDifferentNamesAndIds) {
  Session session;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        const Handle handle = session.newContext();
        session.nextTensorId();
        EXPECT_NE(session.contexts().find(handle), nullptr);
        EXPECT_TRUE(session.eraseContext(handle));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto last = session.contexts().find(session.newContext());
  EXPECT_EQ(last->variable().name(), "context_800");
  EXPECT_EQ(session.nextTensorId(), 801u);
}

std::shared_ptr<const Variable> variable(const char* name) {
  return std::make_shared<Variable>(name, 0);
}

TEST(TensorRegistryTest, LooksOutward) {
  const auto context = std::make_shared<TensorRegistry>("context_0", nullptr);
  const auto graph = std::make_shared<TensorRegistry>("g", context);
  const TensorRegistry subgraph("s", graph);
  using Added = TensorRegistry::Added;
  EXPECT_EQ(context->add(1, "x", variable("context_0_tensor_0")), Added::kYes);
  EXPECT_EQ(context->add(2, "y", nullptr), Added::kYes);
  EXPECT_EQ(graph->add(3, "x", variable("g_tensor_0")), Added::kYes);
  EXPECT_EQ(subgraph.find(1)->name(), "context_0_tensor_0");
  EXPECT_EQ(subgraph.find(3)->name(), "g_tensor_0");
  EXPECT_EQ(subgraph.find(2), nullptr);
  EXPECT_EQ(subgraph.find(4), nullptr);
  EXPECT_EQ(context->find(3), nullptr);
}

TEST(TensorRegistryTest, RefusesAnIdThatItHas) {
  TensorRegistry registry("g", nullptr);
  EXPECT_EQ(registry.makeVariable(), "g_tensor_0");
  EXPECT_EQ(registry.makeVariable(), "g_tensor_1");
  using Added = TensorRegistry::Added;
  EXPECT_EQ(registry.add(1, "x", variable("g_tensor_0")), Added::kYes);
  EXPECT_EQ(registry.add(1, "x", variable("g_tensor_1")), Added::kNameExists);
  EXPECT_EQ(registry.add(1, "y", variable("g_tensor_1")), Added::kIdExists);
  EXPECT_EQ(registry.find(1)->name(), "g_tensor_0");
  EXPECT_EQ(registry.add(2, "x", variable("g_tensor_2")), Added::kYes);
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
