// Heap copies of environment variables and the bounded getenv beneath them.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include <zksupt/frame.h>
#include <zksupt/os.h>

#include "frame/bounds_checked.h"

namespace {

constexpr const char *kName = "ZKSUPT_OS_TEST_VARIABLE";

TEST(Environment, CopyHoldsTheValueAndItsSize)
{
    const struct {
        const char *value;  // null: not set
        uint32_t size;      // 77: untouched
    } cases[] = {{"hello world", 12}, {"", 1}, {nullptr, 77}};
    for (const auto &c : cases) {
        c.value != nullptr ? setenv(kName, c.value, 1) : unsetenv(kName);
        uint32_t size = 77;
        char *copy = SMEnvDup(kName, &size);
        EXPECT_EQ(size, c.size);
        EXPECT_STREQ(copy, c.value);
        SMFreeMem(copy);
    }
    EXPECT_EQ(SMEnvDup(nullptr, nullptr), nullptr);
    // Too small a buffer gets an empty string and nothing past its capacity.
    setenv(kName, "abc", 1);
    uint32_t needed = 0;
    std::string buffer(6, '#');
    EXPECT_EQ(zksupt::frame::getenvS(&needed, buffer.data(), 3, kName), ERANGE);
    EXPECT_EQ(buffer, std::string("\0#####", 6));
    EXPECT_EQ(zksupt::frame::getenvS(&needed, buffer.data(), 4, kName), 0);
    EXPECT_EQ(buffer, std::string("abc\0##", 6));
    unsetenv(kName);
}

}  // namespace
