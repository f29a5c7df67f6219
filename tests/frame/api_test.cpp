// The frame's exported memory, version, context and shutdown functions.
#include <gtest/gtest.h>

#include <cstring>

#include <zksupt/zksupt.h>

namespace {

TEST(FrameApi, MemoryComesFromTheCAllocator)
{
    auto *block = static_cast<unsigned char *>(SMAllocMem(64));
    ASSERT_NE(block, nullptr);
    std::memset(block, 0xA5, 64);

    block = static_cast<unsigned char *>(SMReAllocMem(block, 100000));
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(block[i], 0xA5) << "realloc must keep the contents";

    // Memory from the library and from the C allocator are interchangeable.
    free(block);
    SMFreeMem(malloc(8));
    SMFreeGeneric(SMAllocMem(8));

    void *grown = SMReAllocMem(nullptr, 16);  // like malloc
    EXPECT_NE(grown, nullptr);
    SMFreeGeneric(grown);
}

TEST(FrameApi, NullIsIgnoredByTheFreeFunctions)
{
    SMFreeMem(nullptr);
    SMFreeGeneric(nullptr);
}

TEST(FrameApi, VersionIsOneOneOne)
{
    EXPECT_EQ(SUPTGetMajorVersion(), 1u);
    EXPECT_EQ(SUPTGetMinorVersion(), 1u);
    EXPECT_EQ(SUPTGetRevision(), 1u);
}

TEST(FrameApi, ExportContextIsAlwaysNull)
{
    int something = 0;
    void *context = &something;
    SMGetExportContext(&context);
    EXPECT_EQ(context, nullptr);

    SMSetExportContext(&something);
    context = &something;
    SMGetExportContext(&context);
    EXPECT_EQ(context, nullptr);
    SMResetExportContext(&something);
    SMResetExportContext(nullptr);
}

TEST(FrameApi, ShutdownSucceeds)
{
    EXPECT_EQ(SMOSShutdown(), SM_STATUS_SUCCESS);
}

}  // namespace
