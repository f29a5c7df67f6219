// The language of the process from LANG, and the translated file it picks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace fs = std::filesystem;

// Sets LANG (unset for nullopt) for the life of the object.
class Lang {
  public:
    explicit Lang(const std::optional<std::string> &value)
    {
        if (const char *old = std::getenv("LANG"))
            previous_ = old;
        if (value)
            setenv("LANG", value->c_str(), 1);
        else
            unsetenv("LANG");
    }
    ~Lang()
    {
        if (previous_)
            setenv("LANG", previous_->c_str(), 1);
        else
            unsetenv("LANG");
    }
    Lang(const Lang &) = delete;
    Lang &operator=(const Lang &) = delete;

  private:
    std::optional<std::string> previous_;
};

TEST(Localization, LanguageOfEachLangForm)
{
    const std::tuple<std::optional<std::string>, uint32_t> rows[] = {
        {std::nullopt, 1033},  {"", 1033},      {"C", 1033},           {"POSIX", 1033},
        {"C.UTF-8", 1033},     {"de", 1031},    {"de_DE.UTF-8", 1031}, {"de_AT@euro", 1031},
        {"en_GB.UTF-8", 2057}, {"en_AU", 1033}, {"zh_TW.Big5", 1028},  {"zh_CN.GB2312", 2052},
        {"pt_BR", 1046},       {"pt_PT", 1033}, {"DE_de", 1033},       {"ja_JP.eucJP", 1041},
        {"fr_CA", 1036},       {"x", 1033},
    };
    for (const auto &[lang, code] : rows) {
        const Lang set(lang);
        EXPECT_EQ(SMGetLocalLanguageID(), code) << lang.value_or("(unset)");
    }
}

TEST(Localization, PathFallsBackFromCountryToLanguageToPlain)
{
    const zksupt::test::Sandbox &box = zksupt::test::sandbox();
    const std::string dir = box.path("messages");
    for (const char *file : {"app.txt", "de/app.txt", "de_AT/app.txt", "fr/other.txt", "de_DE/only.txt"})
        box.writeFile(std::string("messages/") + file, file);
    fs::create_directories(dir + "/de/missing.txt");

    const std::tuple<std::optional<std::string>, const char *, std::string> rows[] = {
        {"de_AT.UTF-8", "app.txt", dir + "/de_AT/app.txt"},
        {"de_DE.UTF-8@euro", "app.txt", dir + "/de/app.txt"},
        {"de", "app.txt", dir + "/de/app.txt"},
        {"fr_FR", "app.txt", dir + "/app.txt"},
        {"fr_FR", "other.txt", dir + "/fr/other.txt"},
        {"de_DE", "only.txt", dir + "/de_DE/only.txt"},
        {"de_AT", "only.txt", "NOT_FOUND size 64"},
        {"C", "app.txt", dir + "/app.txt"},
        {std::nullopt, "other.txt", "NOT_FOUND size 64"},
        {"de_AT", "nothing.txt", "NOT_FOUND size 64"},
        {"de_AT", "missing.txt", "NOT_FOUND size 64"},
    };
    for (const auto &[lang, file, expected] : rows) {
        const Lang set(lang);
        EXPECT_EQ(zksupt::test::textOut(64,
                                        [&, file = file](char *out, uint32_t *size) {
                                            return SMGetLocalizedPathFileName(dir.c_str(), file, out, size);
                                        }),
                  expected)
            << lang.value_or("(unset)") << " " << file;
    }

    const Lang set("de_AT");
    const std::string found = dir + "/de_AT/app.txt";
    const auto call = [&](char *out, uint32_t *size) {
        return SMGetLocalizedPathFileName(dir.c_str(), "app.txt", out, size);
    };
    const uint32_t need = static_cast<uint32_t>(found.size() + 1);
    EXPECT_EQ(zksupt::test::textOut(need, call), found);
    EXPECT_EQ(zksupt::test::textOut(need - 1, call), "BUFFER_TOO_SMALL size " + std::to_string(need));
    uint32_t size = 500;
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), "app.txt", nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, need);
    char out[8];
    EXPECT_EQ(SMGetLocalizedPathFileName(nullptr, "app.txt", out, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), nullptr, out, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMGetLocalizedPathFileName(dir.c_str(), "app.txt", out, nullptr), SM_STATUS_INVALID_PARAMETER);
    fs::remove_all(dir);
}

}  // namespace
