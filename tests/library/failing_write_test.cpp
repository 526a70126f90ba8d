#include <gtest/gtest.h>

#include "library/client.h"

// Files that cannot grow: a call fails whole or not at all.
namespace kiv::test {
namespace {

// A call that may be tried again after it failed.
struct Retry {
  const char* what;
  Code failure;
  std::function<Code(Client&)> call;
  Code success = 0;
};

const Retry kRetries[] = {
    {"propertyHasCapability", 1999,
     [](Client& c) { return c.api.propertyHasCapability(0); }},
    {"backendCreate", 4999,
     [](Client& c) {
       Kiv_BackendHandle_t out = nullptr;
       const Code code = c.api.backendCreate(nullptr, nullptr, &out);
       // A failed call uses no handle up.
       EXPECT_EQ(out, reinterpret_cast<void*>(code == 0 ? 2 : 0));
       return code;
     }},
    {"backendSetConfig", 4999,
     [](Client& c) { return c.api.backendSetConfig(c.backend, nullptr); }},
    {"backendGetSupportedOperations", 4999,
     [](Client& c) {
       uint32_t count = 7;
       const Code code =
           c.api.backendGetSupportedOperations(nullptr, &count, nullptr);
       EXPECT_EQ(count, code == 0 ? 0U : 7U);
       return code;
     }},
    {"backendValidateOpConfig", 4999,
     [](Client& c) {
       return c.api.backendValidateOpConfig(nullptr, emptyOpConfig(nullptr));
     }},
    {"backendFree", 4999,
     [](Client& c) { return c.api.backendFree(c.backend); }},
    {"contextCreate", 5999,
     [](Client& c) {
       Kiv_ContextHandle_t out = nullptr;
       const Code code = c.api.contextCreate(nullptr, nullptr, nullptr, &out);
       EXPECT_EQ(out != nullptr, code == 0);
       return code;
     }},
    {"contextCreateFromBinary", 5999,
     [](Client& c) {
       Kiv_ContextHandle_t out = nullptr;
       return c.api.contextCreateFromBinary(nullptr, nullptr, nullptr, "abc", 3,
                                            &out, nullptr);
     }},
    {"contextGetBinary", 5999,
     [](Client& c) {
       return c.api.contextGetBinary(c.context, nullptr, 1, nullptr);
     },
     4950},
    {"graphCreate", 5999,
     [](Client& c) {
       Kiv_GraphHandle_t out = nullptr;
       return c.createGraph("h", &out);
     }},
    {"graphSetConfig", 5999,
     [](Client& c) { return c.api.graphSetConfig(c.graph, nullptr); }},
    {"graphAddNode", 4999,
     [](Client& c) {
       return c.api.graphAddNode(c.graph, emptyOpConfig("op"));
     }},
    {"graphExecute", 5999,
     [](Client& c) {
       char data[] = "abcd";
       return c.execute(c.graph,
                        {tensorWithData(data, 4), tensorWithData(data, 2)});
     }},
    {"deviceFree", 14999, [](Client& c) { return c.api.deviceFree(c.device); }},
    {"profileGetEvents", 12999,
     [](Client& c) {
       return c.api.profileGetEvents(c.profile, nullptr, nullptr);
     }},
};

TEST(FailingWrite, ModelFileIsFullAtEachByteOfEachCall) {
  Client c;
  for (const Retry& row : kRetries) {
    SCOPED_TRACE(row.what);
    const std::string text = c.saver.modelText();
    const std::string data = c.saver.data();
    Code code = row.failure;
    std::size_t limit = text.size();
    for (; code != row.success; ++limit) {
      {
        const FileSizeLimit full(limit);
        code = row.call(c);
      }
      if (code == row.success) break;
      ASSERT_EQ(code, row.failure) << "at " << limit - text.size();
      ASSERT_EQ(c.saver.modelText(), text) << "at " << limit - text.size();
      ASSERT_EQ(c.saver.data(), data) << "at " << limit - text.size();
    }
    ASSERT_TRUE(c.saver.modelText().starts_with(text));
    EXPECT_EQ(c.saver.modelText().size(), limit);
    EXPECT_TRUE(c.saver.modelText().ends_with("\n\n"));
  }
  EXPECT_EQ(c.saver.data(), "abcabcdab");
  // Executions that failed have used up their numbers.
  EXPECT_EQ(c.saver.modelText().find("g_inputTensors_0"), std::string::npos);
}

TEST(FailingWrite, DataFileIsFullAtEachByte) {
  Client c;
  LogCapture log(c.api);
  // Larger than the model file gets, which must not fail here.
  const std::string bytes(20000, 'x');
  ASSERT_EQ(c.api.contextValidateBinary(nullptr, nullptr, nullptr, bytes.data(),
                                        bytes.size()),
            0U);
  const std::string text = c.saver.modelText();
  std::string more = "0123456789";
  Kiv_Tensor_t tensor = tensorWithData(more.data(), 10);
  Kiv_OpConfig_t op = emptyOpConfig("op");
  op.v1.numInputs = 1;
  op.v1.inputTensors = &tensor;
  Kiv_ContextHandle_t out = nullptr;
  for (std::size_t room = 0; room < more.size(); ++room) {
    const auto fails = [&](const char* what, Code expected, auto&& call) {
      SCOPED_TRACE(what);
      Code code = 0;
      {
        const FileSizeLimit full(bytes.size() + room);
        code = call();
      }
      EXPECT_EQ(code, expected);
      EXPECT_EQ(c.saver.modelText(), text);
      EXPECT_EQ(c.saver.data(), bytes);
      std::vector<std::string> messages = {
          "1: Number of elements written(" + std::to_string(room) +
          ") does not match number of elements requested(10)"};
      if (code == 5005 || code == 5002)
        messages.emplace_back(
            "1: Failed to write context binary to disk, ensure "
            "binaryBufferSize matches the actual buffer size.");
      EXPECT_EQ(log.take(), messages);
    };
    fails("create", 5005, [&] {
      return c.api.contextCreateFromBinary(
          nullptr, nullptr, nullptr, more.data(), more.size(), &out, nullptr);
    });
    fails("validate", 5002, [&] {
      return c.api.contextValidateBinary(nullptr, nullptr, nullptr, more.data(),
                                         more.size());
    });
    fails("node", 5999, [&] { return c.api.graphAddNode(c.graph, op); });
    fails("execute", 5999, [&] { return c.execute(c.graph, {tensor}); });
    fails("tensor", 5999,
          [&] { return c.api.tensorCreateGraphTensor(c.graph, &tensor); });
  }
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(c.api.graphAddNode(c.graph, op), 0U);
  EXPECT_EQ(c.saver.data(), bytes + more);
}

// The text of a tensor's creation that cannot be written is no error, but
// nothing refers to the tensor afterwards.
TEST(FailingWrite, TensorsAndFreesGoOn) {
  Client c;
  const std::string text = c.saver.modelText();
  Kiv_Tensor_t tensor = emptyTensor();
  Kiv_ProfileHandle_t profile = c.profile;
  {
    const FileSizeLimit full(text.size() + 20);
    EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), 0U);
    EXPECT_EQ(c.api.profileFree(profile), 12999U);
  }
  EXPECT_EQ(tensor.v1.id, 1U);
  EXPECT_EQ(c.saver.modelText(), text);
  EXPECT_EQ(c.api.profileFree(profile), 12000U);
  EXPECT_EQ(c.execute(c.graph, {tensor}), 0U);
  EXPECT_EQ(c.newText().find("g_tensor_0"), std::string::npos);
  {
    const FileSizeLimit full(text.size());
    EXPECT_EQ(c.api.contextFree(c.context, nullptr), 5999U);
  }
  EXPECT_EQ(c.api.contextFree(c.context, nullptr), 5002U);
}

TEST(FailingWrite, StartIsTriedAgainUntilTheHeaderFits) {
  std::string whole;
  std::string call;
  {
    const SaverLibrary saver;
    ASSERT_EQ(saver.api().propertyHasCapability(0), 0U);
    whole = saver.modelText();
    call = saver.calls();
  }
  const std::string header = whole.substr(0, whole.size() - call.size());
  const SaverLibrary saver;
  for (std::size_t limit = 0; limit < header.size(); limit += 7) {
    const FileSizeLimit full(limit);
    ASSERT_EQ(saver.api().propertyHasCapability(0), 4000U) << limit;
  }
  {
    const FileSizeLimit full(header.size());
    EXPECT_EQ(saver.api().propertyHasCapability(0), 1999U);
  }
  EXPECT_EQ(saver.modelText(), header);
  EXPECT_EQ(saver.api().propertyHasCapability(0), 0U);
  EXPECT_EQ(saver.modelText(), whole);
}

}  // namespace
}  // namespace kiv::test
