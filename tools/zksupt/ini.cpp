// ini get, set, delete and list: INI files read and written through the
// library, so that writes take its file lock and its backup-and-rename.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/status.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <strings.h>

namespace zktool {
namespace {

// The INI engine's value types, by the names the tool takes.
struct IniType {
    const char *name;
    uint32_t code;
    uint32_t width;  // 0: variable
};
const IniType kIniTypes[] = {{"string", 1, 0}, {"binary", 3, 0}, {"bool", 4, 2},  {"uint32", 5, 4},
                             {"int32", 6, 4},  {"uint64", 7, 8}, {"int64", 8, 8}, {"double", 9, 8}};

const IniType *iniType(const std::string &name)
{
    for (const IniType &type : kIniTypes) {
        if (name == type.name)
            return &type;
    }
    return nullptr;
}

// A NUL-separated list, ending in one more NUL, as separate names.
std::vector<std::string> splitList(const std::string &list)
{
    std::vector<std::string> names;
    for (size_t at = 0; at < list.size() && list[at] != '\0';) {
        size_t end = list.find('\0', at);
        names.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return names;
}

std::string formatValue(const IniType &type, const std::string &value)
{
    char text[64];
    const char *p = value.data();
    auto load = [p](auto &v) { std::memcpy(&v, p, sizeof v); };
    switch (type.code) {
    case 3: {
        std::string list;
        for (unsigned char byte : value) {
            std::snprintf(text, sizeof text, "%s0x%02X", list.empty() ? "" : ",", byte);
            list += text;
        }
        return list;
    }
    case 4: {
        uint16_t v;
        load(v);
        return v == 1 ? "TRUE" : "FALSE";
    }
    case 5: {
        uint32_t v;
        load(v);
        return std::to_string(v);
    }
    case 6: {
        int32_t v;
        load(v);
        return std::to_string(v);
    }
    case 7: {
        uint64_t v;
        load(v);
        return std::to_string(v);
    }
    case 8: {
        int64_t v;
        load(v);
        return std::to_string(v);
    }
    case 9: {
        double v;
        load(v);
        std::snprintf(text, sizeof text, "%.8f", v);
        return text;
    }
    default:
        return value;
    }
}

// Turns the command line's text into the engine's value bytes; false when it does not parse.
bool parseValue(const IniType &type, const std::string &text, std::string &value)
{
    char *end = nullptr;
    auto store = [&value](auto v) { value.assign(reinterpret_cast<const char *>(&v), sizeof v); };
    errno = 0;
    switch (type.code) {
    case 1:
        value = text + '\0';
        return true;
    case 3: {
        std::string digits;
        for (size_t i = 0; i < text.size(); ++i) {
            if (text.compare(i, 2, "0x") == 0 || text.compare(i, 2, "0X") == 0)
                ++i;
            else if (text[i] != ',')
                digits += text[i];
        }
        return fromHex(digits, value) && !value.empty();
    }
    case 4:
        if (strcasecmp(text.c_str(), "true") == 0 || text == "1")
            store(uint16_t{1});
        else if (strcasecmp(text.c_str(), "false") == 0 || text == "0")
            store(uint16_t{0});
        else
            return false;
        return true;
    case 5:
    case 7: {
        unsigned long long v = std::strtoull(text.c_str(), &end, 0);
        if (text.empty() || *end != '\0' || errno != 0 || text[0] == '-' || (type.code == 5 && v > UINT32_MAX))
            return false;
        type.code == 5 ? store(static_cast<uint32_t>(v)) : store(static_cast<uint64_t>(v));
        return true;
    }
    case 6:
    case 8: {
        long long v = std::strtoll(text.c_str(), &end, 0);
        if (text.empty() || *end != '\0' || errno != 0 || (type.code == 6 && (v < INT32_MIN || v > INT32_MAX)))
            return false;
        type.code == 6 ? store(static_cast<int32_t>(v)) : store(static_cast<int64_t>(v));
        return true;
    }
    case 9: {
        double v = std::strtod(text.c_str(), &end);
        if (text.empty() || *end != '\0')
            return false;
        store(v);
        return true;
    }
    default:
        return false;
    }
}

struct IniOptions {
    std::string file;
    std::string section;
    std::string key;
    std::string value;
    std::string type = "string";
};

std::string where(const IniOptions &o)
{
    std::string what = o.file;
    if (!o.section.empty())
        what += " [" + o.section + "]";
    if (!o.key.empty())
        what += " " + o.key;
    return what;
}

int getValue(const IniOptions &o)
{
    const IniType *type = iniType(o.type);
    if (!type)
        return fail("unknown type \"" + o.type + "\"", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    if (type->code == 1) {
        std::string text;
        if (int32_t status = readIniText(o.section.c_str(), o.key.c_str(), o.file, text))
            return fail(where(o), status, exitCodeFor(status));
        std::cout << text.c_str() << "\n";
        return kExitOk;
    }
    std::string value(8451, '\0');
    auto size = static_cast<uint32_t>(value.size());
    int32_t status = SMReadINIPathFileValue(o.section.c_str(), o.key.c_str(), type->code, value.data(), &size, nullptr,
                                            0, o.file.c_str(), kWaitForLock);
    if (status != 0)
        return fail(where(o), status, exitCodeFor(status));
    value.resize(type->width ? type->width : size);
    std::cout << formatValue(*type, value) << "\n";
    return kExitOk;
}

int setValue(const IniOptions &o)
{
    const IniType *type = iniType(o.type);
    if (!type)
        return fail("unknown type \"" + o.type + "\"", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    std::string value;
    if (!parseValue(*type, o.value, value))
        return fail(where(o) + ": \"" + o.value + "\" is not a " + o.type, SM_STATUS_BAD_LENGTH, kExitMalformed);
    int32_t status = SMWriteINIPathFileValue(o.section.c_str(), o.key.c_str(), type->code, value.data(),
                                             static_cast<uint32_t>(value.size()), o.file.c_str(), kWaitForLock);
    return status == 0 ? kExitOk : fail(where(o), status, exitCodeFor(status));
}

int deleteValue(const IniOptions &o)
{
    // Deleting something absent is not an error to the engine; say so here.
    std::string ignored;
    if (int32_t status = readIniText(o.section.c_str(), o.key.empty() ? nullptr : o.key.c_str(), o.file, ignored))
        return fail(where(o), status, exitCodeFor(status));
    int32_t status = SMWriteINIPathFileValue(o.section.c_str(), o.key.empty() ? nullptr : o.key.c_str(), 1, nullptr, 0,
                                             o.file.c_str(), kWaitForLock);
    return status == 0 ? kExitOk : fail(where(o), status, exitCodeFor(status));
}

int listNames(const IniOptions &o)
{
    const char *section = o.section.empty() ? nullptr : o.section.c_str();
    std::string list;
    if (int32_t status = readIniText(section, nullptr, o.file, list))
        return fail(where(o), status, exitCodeFor(status));
    for (const std::string &name : splitList(list)) {
        if (!section) {
            std::cout << "[" << name << "]\n";
            continue;
        }
        std::string text;
        readIniText(section, name.c_str(), o.file, text);
        std::cout << name << "=" << text.c_str() << "\n";
    }
    return kExitOk;
}

}  // namespace

void addIniCommands(CLI::App &app, Outcome &outcome)
{
    CLI::App *ini = app.add_subcommand("ini", "Read and write INI files through the library's locks");
    ini->require_subcommand(1);
    const std::string types = "Value type: string, binary, bool, uint32, int32, uint64, int64 or double";

    auto get = std::make_shared<IniOptions>();
    CLI::App *getCommand = ini->add_subcommand("get", "Print one value");
    getCommand->add_option("file", get->file, "INI file")->required();
    getCommand->add_option("section", get->section, "Section")->required();
    getCommand->add_option("key", get->key, "Key")->required();
    getCommand->add_option("-t,--type", get->type, types);
    getCommand->callback([get, &outcome] { outcome.exitCode = getValue(*get); });

    auto set = std::make_shared<IniOptions>();
    CLI::App *setCommand = ini->add_subcommand("set", "Write or replace one value");
    setCommand->add_option("file", set->file, "INI file")->required();
    setCommand->add_option("section", set->section, "Section")->required();
    setCommand->add_option("key", set->key, "Key")->required();
    setCommand->add_option("value", set->value, "Value, as text of its type")->required();
    setCommand->add_option("-t,--type", set->type, types);
    setCommand->callback([set, &outcome] { outcome.exitCode = setValue(*set); });

    auto remove = std::make_shared<IniOptions>();
    CLI::App *deleteCommand = ini->add_subcommand("delete", "Delete a key, or a whole section");
    deleteCommand->add_option("file", remove->file, "INI file")->required();
    deleteCommand->add_option("section", remove->section, "Section")->required();
    deleteCommand->add_option("key", remove->key, "Key (the whole section when left out)");
    deleteCommand->callback([remove, &outcome] { outcome.exitCode = deleteValue(*remove); });

    auto list = std::make_shared<IniOptions>();
    CLI::App *listCommand = ini->add_subcommand("list", "List the sections, or a section's keys and values");
    listCommand->add_option("file", list->file, "INI file")->required();
    listCommand->add_option("section", list->section, "Section whose keys to list");
    listCommand->callback([list, &outcome] { outcome.exitCode = listNames(*list); });
}

}  // namespace zktool
