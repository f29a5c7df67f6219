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

class Environment : public testing::Test {
  protected:
    void TearDown() override { unsetenv(kName); }
};

TEST_F(Environment, DuplicateHoldsTheValueAndItsSize)
{
    const struct {
        const char *value;  // null: not set
        const char *copy;
        uint32_t size;
    } cases[] = {{"hello world", "hello world", 12}, {"", "", 1}, {nullptr, nullptr, 77}};
    for (const auto &c : cases) {
        if (c.value != nullptr)
            setenv(kName, c.value, 1);
        else
            unsetenv(kName);
        uint32_t size = 77;
        char *copy = SMEnvDup(kName, &size);
        SCOPED_TRACE(c.value != nullptr ? c.value : "(unset)");
        if (c.copy == nullptr) {
            EXPECT_EQ(copy, nullptr);
        } else {
            ASSERT_NE(copy, nullptr);
            EXPECT_STREQ(copy, c.copy);
        }
        EXPECT_EQ(size, c.size);
        SMFreeMem(copy);
    }
    setenv(kName, "x", 1);
    char *copy = SMEnvDup(kName, nullptr);
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy, "x");
    SMFreeMem(copy);
    EXPECT_EQ(SMEnvDup(nullptr, nullptr), nullptr);
}

TEST_F(Environment, BoundedGetenvNeverWritesPastTheCapacity)
{
    using zksupt::frame::getenvS;
    setenv(kName, "abc", 1);
    uint32_t needed = 0;
    EXPECT_EQ(getenvS(&needed, nullptr, 0, kName), 0);  // a size query
    EXPECT_EQ(needed, 4u);

    std::string buffer(8, '#');
    EXPECT_EQ(getenvS(&needed, buffer.data(), 4, kName), 0);
    EXPECT_EQ(buffer, std::string("abc\0####", 8));

    buffer.assign(8, '#');
    EXPECT_EQ(getenvS(&needed, buffer.data(), 3, kName), ERANGE);
    EXPECT_EQ(buffer, std::string("\0#######", 8));  // an empty text, nothing past it
    EXPECT_EQ(needed, 4u);

    EXPECT_EQ(getenvS(&needed, nullptr, 4, kName), EINVAL);
    EXPECT_EQ(getenvS(nullptr, nullptr, 0, kName), EINVAL);
    EXPECT_EQ(getenvS(&needed, nullptr, 0, nullptr), EINVAL);

    unsetenv(kName);
    buffer.assign(8, '#');
    EXPECT_EQ(getenvS(&needed, buffer.data(), 8, kName), 0);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(buffer[0], '\0');
}

}  // namespace
