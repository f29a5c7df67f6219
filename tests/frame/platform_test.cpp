// The test programs run on the platform they were built for: a cross build
// that silently fell back to the host compiler, or ran natively, fails here.
#include <gtest/gtest.h>

#include <sys/utsname.h>

#include <bit>
#include <string>

namespace {

TEST(Platform, ByteOrderPointerSizeAndMachineAreThoseOfTheTarget)
{
    EXPECT_EQ(std::endian::native == std::endian::big, ZKSUPT_TARGET_BIG_ENDIAN == 1);
    EXPECT_EQ(sizeof(void *), static_cast<std::size_t>(ZKSUPT_TARGET_POINTER_SIZE));
    EXPECT_EQ(sizeof(long), static_cast<std::size_t>(ZKSUPT_TARGET_POINTER_SIZE));
    utsname machine{};
    ASSERT_EQ(uname(&machine), 0);
    const std::string name = machine.machine;
    EXPECT_EQ(name.starts_with("ppc"), ZKSUPT_TARGET_BIG_ENDIAN == 1) << "running on " << name;
}

}  // namespace
