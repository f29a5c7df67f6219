// The shared library as a caller loads it: every function the public headers
// declare resolves with dlsym (the exported_symbols check holds what is
// exported against the interface's names), and internals stay hidden.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

// Names of the functions declared in the public headers.
std::set<std::string> declaredFunctions()
{
    static const std::regex declaration(R"(ZKSUPT_API[^;(]*?\b((?:SM|SUPT)\w+)\s*\()");
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(ZKSUPT_INCLUDE_DIR "/zksupt")) {
        const std::string text = zksupt::test::readFile(entry.path());
        for (std::sregex_iterator it(text.begin(), text.end(), declaration), end; it != end; ++it)
            names.insert((*it)[1].str());
    }
    return names;
}

TEST(Symbols, LoadedLibraryResolvesEveryDeclaredFunction)
{
    const auto declared = declaredFunctions();
    ASSERT_GE(declared.size(), 11u) << "the headers were not read";
    const int result = zksupt::test::runInChild([&declared] {
        void *library = dlopen(ZKSUPT_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return 100;
        int missing = 0;
        for (const auto &name : declared)
            if (dlsym(library, name.c_str()) == nullptr)
                ++missing;
        using Version = uint32_t (*)();
        auto major = reinterpret_cast<Version>(dlsym(library, "SUPTGetMajorVersion"));
        if (major == nullptr || major() != 1)
            return 101;
        // Internal functions stay hidden.
        if (dlsym(library, "_ZN6zksupt5frame7libraryEv") != nullptr)
            return 102;
        dlclose(library);
        return std::min(missing, 99);
    });
    EXPECT_EQ(result, 0) << "100: dlopen failed, 101: wrong version, 102: internals visible, else missing names";
}

TEST(Symbols, LibraryLoadsEvenWhenItsAttachFails)
{
    const int result = zksupt::test::runInChild([] {
        const std::string missing = zksupt::test::sandbox().path("absent/qvreg.cfg");
        setenv("ZKSUPT_REGISTRY", missing.c_str(), 1);
        void *library = dlopen(ZKSUPT_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return 1;
        using Shutdown = int32_t (*)();
        auto shutdown = reinterpret_cast<Shutdown>(dlsym(library, "SMOSShutdown"));
        const int status = shutdown != nullptr ? shutdown() : 2;
        dlclose(library);
        return status;
    });
    EXPECT_EQ(result, 0);
}

}  // namespace
