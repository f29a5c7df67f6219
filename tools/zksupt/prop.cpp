// prop get, set and list: property files (key=value lines) through the library.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/status.h>
#include <zksupt/xlt.h>

#include <iostream>
#include <memory>

namespace zktool {
namespace {

constexpr uint32_t kText = 13;

struct PropOptions {
    std::string file;
    std::string key;
    std::string value;
    std::string type = "utf8";
};

// Reads a key's value (or, with a null key and type 13, the list of keys).
int32_t readValue(const char *key, uint32_t type, const std::string &path, std::string &out)
{
    return readGrowing(out, 8192, [&](char *buffer, uint32_t *size) {
        return SMPropertyFileReadValue(key, type, buffer, size, nullptr, 0, path.c_str(), kWaitForLock);
    });
}

int getValue(const PropOptions &o)
{
    const int type = valueTypeCode(o.type);
    if (type < 0)
        return fail("unknown type \"" + o.type + "\"", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    std::string value;
    if (int32_t status = readValue(o.key.c_str(), static_cast<uint32_t>(type), o.file, value))
        return fail(o.file + " " + o.key, status, exitCodeFor(status));
    if (type == static_cast<int>(kText)) {
        std::cout << value.c_str() << "\n";
        return kExitOk;
    }
    std::string text(4 * value.size() + 64, '\0');
    auto size = static_cast<uint32_t>(text.size());
    int32_t status = SMXLTTypeValueToUTF8(value.data(), static_cast<uint32_t>(value.size()), text.data(), &size,
                                          static_cast<uint32_t>(type));
    if (status != 0)
        return fail(o.file + " " + o.key, status, exitCodeFor(status));
    std::cout << text.c_str() << "\n";
    return kExitOk;
}

int setValue(const PropOptions &o)
{
    const int type = valueTypeCode(o.type);
    if (type < 0)
        return fail("unknown type \"" + o.type + "\"", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    // The library empties the file when asked to write a key it does not
    // hold, so an absent key is refused before anything is written.
    std::string current;
    if (int32_t status = readValue(o.key.c_str(), kText, o.file, current))
        return fail(o.file + " " + o.key, status, exitCodeFor(status));
    std::string value(65536, '\0');
    auto size = static_cast<uint32_t>(value.size());
    int32_t status = SMXLTUTF8ToTypeValue(o.value.c_str(), value.data(), &size, static_cast<uint32_t>(type));
    if (status != 0)
        return fail(o.file + " " + o.key + ": \"" + o.value + "\"", status, kExitMalformed);
    status = SMPropertyFileWriteValue(o.key.c_str(), static_cast<uint32_t>(type), value.data(), size, o.file.c_str(),
                                      kWaitForLock);
    return status == 0 ? kExitOk : fail(o.file + " " + o.key, status, exitCodeFor(status));
}

int listValues(const PropOptions &o)
{
    std::string list;
    if (int32_t status = readValue(nullptr, kText, o.file, list))
        return fail(o.file, status, exitCodeFor(status));
    for (size_t at = 0; at < list.size() && list[at] != '\0';) {
        size_t end = list.find('\0', at);
        std::string key = list.substr(at, end - at);
        std::string value;
        readValue(key.c_str(), kText, o.file, value);
        std::cout << key << "=" << value.c_str() << "\n";
        at = end + 1;
    }
    return kExitOk;
}

}  // namespace

void addPropCommands(CLI::App &app, Outcome &outcome)
{
    CLI::App *prop = app.add_subcommand("prop", "Read and write property files through the library's locks");
    prop->require_subcommand(1);
    const std::string types = "Value type: a name (utf8, uint32, boolean, ...) or code 0-16";

    auto get = std::make_shared<PropOptions>();
    CLI::App *getCommand = prop->add_subcommand("get", "Print the value of a key");
    getCommand->add_option("file", get->file, "Property file")->required();
    getCommand->add_option("key", get->key, "Key")->required();
    getCommand->add_option("-t,--type", get->type, types);
    getCommand->callback([get, &outcome] { outcome.exitCode = getValue(*get); });

    auto set = std::make_shared<PropOptions>();
    CLI::App *setCommand = prop->add_subcommand("set", "Replace the value of a key the file holds");
    setCommand->add_option("file", set->file, "Property file")->required();
    setCommand->add_option("key", set->key, "Key")->required();
    setCommand->add_option("value", set->value, "Value, as text of its type")->required();
    setCommand->add_option("-t,--type", set->type, types);
    setCommand->callback([set, &outcome] { outcome.exitCode = setValue(*set); });

    auto list = std::make_shared<PropOptions>();
    CLI::App *listCommand = prop->add_subcommand("list", "List the keys and their values");
    listCommand->add_option("file", list->file, "Property file")->required();
    listCommand->callback([list, &outcome] { outcome.exitCode = listValues(*list); });
}

}  // namespace zktool
