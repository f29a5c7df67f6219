// The shared library as a caller loads it, with an attach that fails for want
// of a registry file: every function the public headers declare resolves with
// dlsym, internals stay hidden, and the library still shuts down. Memory it
// hands out comes from the C allocator.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include <zksupt/frame.h>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

TEST(Symbols, LoadedLibraryResolvesEveryDeclaredFunctionEvenWhenItsAttachFails)
{
    static const std::regex declaration(R"(ZKSUPT_API[^;(]*?\b((?:SM|SUPT)\w+)\s*\()");
    std::set<std::string> declared;
    for (const auto &entry : std::filesystem::directory_iterator(ZKSUPT_INCLUDE_DIR "/zksupt")) {
        const std::string text = zksupt::test::readFile(entry.path());
        for (std::sregex_iterator it(text.begin(), text.end(), declaration), end; it != end; ++it)
            declared.insert((*it)[1].str());
    }
    ASSERT_GE(declared.size(), 11u) << "the headers were not read";
    const int result = zksupt::test::runInChild([&declared] {
        setenv("ZKSUPT_REGISTRY", zksupt::test::sandbox().path("absent/qvreg.cfg").c_str(), 1);
        void *library = dlopen(ZKSUPT_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return 100;
        const auto missing = std::count_if(declared.begin(), declared.end(), [library](const std::string &name) {
            return !dlsym(library, name.c_str());
        });
        auto major = reinterpret_cast<uint32_t (*)()>(dlsym(library, "SUPTGetMajorVersion"));
        auto shutdown = reinterpret_cast<int32_t (*)()>(dlsym(library, "SMOSShutdown"));
        if (major == nullptr || major() != 1 || shutdown == nullptr || shutdown() != 0)
            return 101;
        if (dlsym(library, "_ZN6zksupt5frame7libraryEv") != nullptr)
            return 102;
        dlclose(library);
        return static_cast<int>(std::min<long>(missing, 99));
    });
    EXPECT_EQ(result, 0) << "100: dlopen failed, 101: wrong version or shutdown, 102: internals visible, else missing";
}

TEST(FrameMemory, ComesFromTheCAllocator)
{
    auto *block = static_cast<unsigned char *>(SMAllocMem(64));
    ASSERT_NE(block, nullptr);
    std::memset(block, 0xA5, 64);
    block = static_cast<unsigned char *>(SMReAllocMem(block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::count(block, block + 64, 0xA5), 64) << "realloc must keep the contents";
    std::free(block);
    SMFreeMem(std::malloc(8));
    SMFreeGeneric(SMReAllocMem(nullptr, 16));  // like malloc
}

}  // namespace
