// The language of the process from LANG, and the translated file it picks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace fs = std::filesystem;

// LANG as given, or unset for null.
void setLang(const char *value)
{
    if (value != nullptr)
        setenv("LANG", value, 1);
    else
        unsetenv("LANG");
}

class Localization : public ::testing::Test {
  protected:
    ~Localization() override { setLang(saved_.empty() ? nullptr : saved_.c_str()); }

  private:
    const std::string saved_ = std::getenv("LANG") != nullptr ? std::getenv("LANG") : "";
};

TEST_F(Localization, LanguageOfEachLangForm)
{
    const std::tuple<const char *, uint32_t> rows[] = {
        {nullptr, 1033},        {"", 1033},           {"C", 1033},           {"POSIX", 1033}, {"C.UTF-8", 1033},
        {"de", 1031},           {"de_AT@euro", 1031}, {"en_GB.UTF-8", 2057}, {"en_AU", 1033}, {"zh_TW.Big5", 1028},
        {"zh_CN.GB2312", 2052}, {"pt_BR", 1046},      {"pt_PT", 1033},       {"DE_de", 1033}, {"x", 1033},
    };
    for (const auto &[lang, code] : rows) {
        setLang(lang);
        EXPECT_EQ(SMGetLocalLanguageID(), code) << (lang != nullptr ? lang : "(unset)");
    }
}

TEST_F(Localization, PathFallsBackFromCountryToLanguageToPlain)
{
    const std::string dir = zksupt::test::sandbox().path("messages");
    for (const char *file : {"app.txt", "de/app.txt", "de_AT/app.txt", "fr/other.txt", "de_DE/only.txt"})
        zksupt::test::sandbox().writeFile(std::string("messages/") + file, file);
    fs::create_directories(dir + "/de/folder.txt");

    const std::tuple<const char *, const char *, uint32_t, std::string> rows[] = {
        {"de_AT.UTF-8", "app.txt", 64, dir + "/de_AT/app.txt"},
        {"de_DE.UTF-8@euro", "app.txt", 64, dir + "/de/app.txt"},
        {"fr_FR", "app.txt", 64, dir + "/app.txt"},
        {"fr_FR", "other.txt", 64, dir + "/fr/other.txt"},
        {"de_DE", "only.txt", 64, dir + "/de_DE/only.txt"},
        {"de_AT", "only.txt", 64, "NOT_FOUND size 64"},
        {"de_AT", "folder.txt", 64, "NOT_FOUND size 64"},
        {"C", "app.txt", 64, dir + "/app.txt"},
        {nullptr, "other.txt", 64, "NOT_FOUND size 64"},
        {"de_AT", "app.txt", static_cast<uint32_t>(dir.size() + 15), dir + "/de_AT/app.txt"},
        {"de_AT", "app.txt", static_cast<uint32_t>(dir.size() + 14),
         "BUFFER_TOO_SMALL size " + std::to_string(dir.size() + 15)},
    };
    for (const auto &[lang, file, capacity, expected] : rows) {
        setLang(lang);
        EXPECT_EQ(zksupt::test::textOut(capacity,
                                        [&, file = file](char *out, uint32_t *size) {
                                            return SMGetLocalizedPathFileName(dir.c_str(), file, out, size);
                                        }),
                  expected)
            << (lang != nullptr ? lang : "(unset)") << " " << file;
    }
    uint32_t size = 500;
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), "app.txt", nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, dir.size() + 15);
    char out[8];
    EXPECT_EQ(SMGetLocalizedPathFileName(nullptr, "app.txt", out, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), nullptr, out, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), "app.txt", out, nullptr), SM_STATUS_INVALID_PARAMETER);
    fs::remove_all(dir);
}

}  // namespace
