// Memory the library hands out comes from the C allocator, so the library's
// free functions and the C library's are interchangeable.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include <zksupt/frame.h>

namespace {

TEST(FrameMemory, ComesFromTheCAllocator)
{
    auto *block = static_cast<unsigned char *>(SMAllocMem(64));
    ASSERT_NE(block, nullptr);
    std::memset(block, 0xA5, 64);
    block = static_cast<unsigned char *>(SMReAllocMem(block, 100000));
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(block[i], 0xA5) << "realloc must keep the contents";
    std::free(block);
    SMFreeMem(std::malloc(8));
    SMFreeGeneric(SMReAllocMem(nullptr, 16));  // like malloc
    SMFreeMem(nullptr);
    SMFreeGeneric(nullptr);
}

}  // namespace
