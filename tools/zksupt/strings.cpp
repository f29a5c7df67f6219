// strings: the suite's localised strings by ID.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/status.h>
#include <zksupt/text.h>

#include <iostream>
#include <memory>

namespace zktool {
namespace {

struct StringOptions {
    uint32_t id = 0;
    uint32_t language = 0;
    std::string file;
};

int printString(const StringOptions &o)
{
    uint32_t language = o.language;
    std::string text(16384, '\0');
    auto size = static_cast<uint32_t>(text.size());
    uint32_t copied = 0;
    if (!o.file.empty()) {
        copied = SMGetUTF8StrFromIDPathFile(o.id, &language, o.file.c_str(), text.data(), &size);
    } else {
        std::vector<ucs2> wide(8192);
        size = static_cast<uint32_t>(wide.size() * sizeof(ucs2));
        if (SMGetUCS2StrFromID(o.id, &language, wide.data(), &size) != 0) {
            size = static_cast<uint32_t>(text.size());
            copied = SMUCS2StrToUTF8Str(text.data(), &size, wide.data()) == 0 ? size : 0;
        }
    }
    if (copied == 0)
        return fail("string " + std::to_string(o.id), SM_STATUS_NOT_FOUND, kExitNotFound);
    std::cout << text.c_str() << "\n";
    if (o.language != 0 && language != o.language)
        std::cerr << "zksupt: string " << o.id << ": shown in English, missing in language " << o.language << "\n";
    return kExitOk;
}

}  // namespace

void addStringCommands(CLI::App &app, Outcome &outcome)
{
    auto options = std::make_shared<StringOptions>();
    CLI::App *strings = app.add_subcommand("strings", "Show a localised string of the suite by its ID");
    strings->add_option("id", options->id, "String ID (decimal, or hexadecimal with 0x)")->required();
    strings->add_option("-l,--lang", options->language, "Language code, such as 1031 for German (English by default)");
    strings->add_option("-f,--file", options->file, "String table to read (the suite's own by default)");
    strings->callback([options, &outcome] { outcome.exitCode = printString(*options); });
}

}  // namespace zktool
