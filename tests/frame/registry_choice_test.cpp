// Choice of the product registry file at attach.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

#include "config/registry_file.h"
#include "support/child.h"
#include "support/sandbox.h"

namespace zksupt::config {
namespace {

using test::sandbox;

TEST(RegistryChoice, FirstExistingCandidateWins)
{
    const std::string present = sandbox().registryFile();
    const std::string other = sandbox().writeFile("other.cfg", "x=1\n");
    const std::string missing = sandbox().path("missing.cfg");

    const std::array<const char *, 3> missingFirst{missing.c_str(), present.c_str(), other.c_str()};
    EXPECT_STREQ(firstExisting(missingFirst), present.c_str());

    const std::array<const char *, 2> otherFirst{other.c_str(), present.c_str()};
    EXPECT_STREQ(firstExisting(otherFirst), other.c_str());

    const std::array<const char *, 2> none{missing.c_str(), nullptr};
    EXPECT_EQ(firstExisting(none), nullptr);

    // A directory exists too: existence is all that is tested.
    const std::array<const char *, 1> dir{sandbox().root().c_str()};
    EXPECT_STREQ(firstExisting(dir), sandbox().root().c_str());
}

TEST(RegistryChoice, TheOverrideIsTheOnlyCandidate)
{
    const int result = test::runInChild([] {
        const std::string other = sandbox().writeFile("elsewhere/qvreg.cfg", "tarn.installpath=/\n");
        setenv("ZKSUPT_REGISTRY", other.c_str(), 1);
        if (!chooseRegistryFile() || registryFilePath() != other)
            return 1;
        // A missing override fails the choice, whatever else exists, and a
        // failed choice leaves no path behind.
        const std::string missing = sandbox().path("elsewhere/none.cfg");
        setenv("ZKSUPT_REGISTRY", missing.c_str(), 1);
        if (chooseRegistryFile() || registryFilePath() != nullptr)
            return 2;
        setenv("ZKSUPT_REGISTRY", "", 1);
        if (chooseRegistryFile())
            return 3;
        return 0;
    });
    EXPECT_EQ(result, 0);
}

TEST(RegistryChoice, WithoutOverrideOnlyTheInstalledLocationsCount)
{
    const int result = test::runInChild([] {
        unsetenv("ZKSUPT_REGISTRY");
        const bool chosen = chooseRegistryFile();
        const char *path = registryFilePath();
        if (!chosen)
            return path == nullptr ? 0 : 1;
        const std::string got = path;
        return got == "/etc/qvreg.cfg" || got == "/usr/lib/ext/vexa/qvreg.cfg" ? 0 : 2;
    });
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zksupt::config
