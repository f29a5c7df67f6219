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
        EXPECT_EQ(copy != nullptr, c.value != nullptr);
        if (copy != nullptr && c.value != nullptr) {
            EXPECT_STREQ(copy, c.value);
        }
        SMFreeMem(copy);
    }
    setenv(kName, "x", 1);
    char *copy = SMEnvDup(kName, nullptr);
    EXPECT_STREQ(copy, "x");
    SMFreeMem(copy);
    EXPECT_EQ(SMEnvDup(nullptr, nullptr), nullptr);
    unsetenv(kName);
}

TEST(Environment, BoundedGetenvNeverWritesPastTheCapacity)
{
    using zksupt::frame::getenvS;
    setenv(kName, "abc", 1);
    uint32_t needed = 0;
    EXPECT_EQ(getenvS(&needed, nullptr, 0, kName), 0);  // a size query
    EXPECT_EQ(needed, 4u);
    std::string buffer(6, '#');
    EXPECT_EQ(getenvS(&needed, buffer.data(), 4, kName), 0);
    EXPECT_EQ(buffer, std::string("abc\0##", 6));
    buffer.assign(6, '#');
    EXPECT_EQ(getenvS(&needed, buffer.data(), 3, kName), ERANGE);
    EXPECT_EQ(buffer, std::string("\0#####", 6));
    EXPECT_EQ(getenvS(&needed, nullptr, 4, kName), EINVAL);
    EXPECT_EQ(getenvS(nullptr, nullptr, 0, kName), EINVAL);
    EXPECT_EQ(getenvS(&needed, nullptr, 0, nullptr), EINVAL);
    unsetenv(kName);
    EXPECT_EQ(getenvS(&needed, buffer.data(), 6, kName), 0);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(buffer[0], '\0');
}

}  // namespace
