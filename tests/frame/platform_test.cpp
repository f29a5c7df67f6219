// The test programs run on the platform they were built for: a cross build
// that silently fell back to the host compiler, or ran natively, fails here.
#include <gtest/gtest.h>

#include <sys/utsname.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

TEST(Platform, ByteOrderAndPointerSizeAreThoseOfTheTarget)
{
    const uint32_t word = 0x01020304;
    unsigned char bytes[4];
    std::memcpy(bytes, &word, sizeof word);
    const bool bigEndian = bytes[0] == 0x01;
    EXPECT_EQ(bigEndian, ZKSUPT_TARGET_BIG_ENDIAN == 1);
    EXPECT_EQ(sizeof(void *), static_cast<std::size_t>(ZKSUPT_TARGET_POINTER_SIZE));
    EXPECT_EQ(sizeof(long), static_cast<std::size_t>(ZKSUPT_TARGET_POINTER_SIZE));
}

TEST(Platform, TheProgramRunsOnTheTargetMachine)
{
    utsname machine{};
    ASSERT_EQ(uname(&machine), 0);
    const std::string name = machine.machine;
    if (ZKSUPT_TARGET_BIG_ENDIAN == 1)
        EXPECT_EQ(name.rfind("ppc", 0), 0u) << "running on " << name;
    else
        EXPECT_EQ(name.rfind("ppc", 0), std::string::npos) << "running on " << name;
}

}  // namespace
