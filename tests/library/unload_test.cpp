#include <gtest/gtest.h>

#include "support/records.h"
#include "support/saver_library.h"

namespace kiv::test {
namespace {

TEST(Unload, ReallyUnloadsAndWritesTheFooter) {
  SaverLibrary saver;
  createObjects(saver.api());
  const std::string before = saver.modelText();
  EXPECT_FALSE(before.ends_with("}\n"));
  EXPECT_TRUE(saver.unload());
  const std::string after = saver.modelText();
  ASSERT_TRUE(after.starts_with(before));
  EXPECT_EQ(after.substr(before.size()),
            "   if (logging) {\n"
            "     VALIDATE(error, interface.logFree(loghandle));\n"
            "   }\n"
            "\n"
            "   if (fclose(fp)) error = -1;\n"
            "   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? "
            "0 : error;\n"
            "}\n");
}

}  // namespace
}  // namespace kiv::test
