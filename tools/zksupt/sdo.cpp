// sdo dump, build and check: SDO binary objects and arrays as a tree, as
// JSON, and back.
#include "common.h"
#include "sdo_layout.h"

#include <zksupt/sdo.h>
#include <zksupt/status.h>
#include <zksupt/xlt.h>

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

namespace zktool {
namespace {

using Json = nlohmann::ordered_json;

struct ConfigDeleter {
    void operator()(SDOConfig *config) const { SMSDOConfigFree(config); }
};
using ConfigPtr = std::unique_ptr<SDOConfig, ConfigDeleter>;

// One entry of a binary object, read through the library.
struct Entry {
    uint16_t id = 0;
    uint8_t type = 0;
    std::string value;
};

std::vector<Entry> entriesOf(const unsigned char *object)
{
    std::vector<Entry> entries;
    const uint32_t count = SMSDOBinaryGetCount(object, nullptr);
    for (uint32_t i = 0; i < count; ++i) {
        Entry entry;
        uint32_t size = 0;
        SMSDOBinaryGetDataByIndex(object, i, &entry.id, &entry.type, nullptr, &size);
        entry.value.resize(size);
        SMSDOBinaryGetDataByIndex(object, i, &entry.id, &entry.type, entry.value.data(), &size);
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<std::string> elementsOf(const unsigned char *array)
{
    std::vector<std::string> elements;
    const uint32_t count = SMSDOBinaryGetCount(array, nullptr);
    const uint32_t total = SMSDOBinaryGetSize(array, nullptr);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t size = 0;
        SMSDOBinaryArrayGetByIndex(array, total, i, nullptr, &size);
        std::string element(size, '\0');
        SMSDOBinaryArrayGetByIndex(array, total, i, element.data(), &size);
        elements.push_back(std::move(element));
    }
    return elements;
}

const unsigned char *bytesOf(const std::string &s)
{
    return reinterpret_cast<const unsigned char *>(s.data());
}

bool isNested(const Entry &entry)
{
    const auto *p = bytesOf(entry.value);
    return (entry.type & 0x0F) == sdo::kBaseNested &&
           (sdo::isObject(p, entry.value.size()) || sdo::isArray(p, entry.value.size()));
}

std::string typeName(uint8_t type)
{
    std::string name = kValueTypeNames[type & 0x0F];
    return (type & sdo::kArrayFlag) ? name + "[]" : name;
}

// The value in the library's own text form; nothing for arrays of values and
// values the text form refuses.
std::optional<std::string> valueText(uint8_t type, const std::string &value)
{
    if (type & sdo::kArrayFlag)
        return std::nullopt;
    uint32_t format = type & 0x0F;
    if (format == sdo::kBaseNested)
        format |= 0x400;
    std::string text(4 * value.size() + 64, '\0');
    auto size = static_cast<uint32_t>(text.size());
    if (SMXLTTypeValueToUTF8(value.data(), static_cast<uint32_t>(value.size()), text.data(), &size, format) != 0)
        return std::nullopt;
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    return text;
}

Json blockToJson(const std::string &block);

Json entryToJson(const Entry &entry)
{
    Json json;
    json["id"] = entry.id;
    json["type"] = entry.type;
    json["typeName"] = typeName(entry.type);
    json["attributes"] = entry.type & 0xE0;
    if (isNested(entry)) {
        json[sdo::isObject(bytesOf(entry.value), entry.value.size()) ? "object" : "array"] = blockToJson(entry.value);
        return json;
    }
    if (auto text = valueText(entry.type, entry.value))
        json["text"] = *text;
    json["bytes"] = toHex(entry.value.data(), entry.value.size());
    return json;
}

Json blockToJson(const std::string &block)
{
    Json json;
    if (sdo::isObject(bytesOf(block), block.size())) {
        json["kind"] = "object";
        json["entries"] = Json::array();
        for (const Entry &entry : entriesOf(bytesOf(block)))
            json["entries"].push_back(entryToJson(entry));
    } else {
        json["kind"] = "array";
        json["elements"] = Json::array();
        for (const std::string &element : elementsOf(bytesOf(block)))
            json["elements"].push_back(blockToJson(element));
    }
    return json;
}

void printBlock(std::ostream &out, const std::string &block, const std::string &indent);

void printEntry(std::ostream &out, const Entry &entry, const std::string &indent)
{
    char head[64];
    std::snprintf(head, sizeof head, "%u (0x%04X) ", entry.id, entry.id);
    char attributes[16];
    std::snprintf(attributes, sizeof attributes, " attr 0x%02X", entry.type & 0xE0);
    out << indent << head;
    if (isNested(entry)) {
        out << (sdo::isObject(bytesOf(entry.value), entry.value.size()) ? "object" : "array") << attributes << "\n";
        printBlock(out, entry.value, indent + "  ");
        return;
    }
    out << typeName(entry.type) << attributes << " = ";
    if (auto text = valueText(entry.type, entry.value))
        out << *text << "\n";
    else
        out << "0x" << toHex(entry.value.data(), entry.value.size()) << "\n";
}

void printBlock(std::ostream &out, const std::string &block, const std::string &indent)
{
    const unsigned char *p = bytesOf(block);
    if (sdo::isObject(p, block.size())) {
        out << indent << "object, " << SMSDOBinaryGetCount(p, nullptr) << " entries, " << SMSDOBinaryGetSize(p, nullptr)
            << " bytes\n";
        for (const Entry &entry : entriesOf(p))
            printEntry(out, entry, indent + "  ");
        return;
    }
    out << indent << "array, " << SMSDOBinaryGetCount(p, nullptr) << " elements, " << SMSDOBinaryGetSize(p, nullptr)
        << " bytes\n";
    size_t index = 0;
    for (const std::string &element : elementsOf(p)) {
        out << indent << "  [" << index++ << "]\n";
        printBlock(out, element, indent + "    ");
    }
}

// Reads a file and checks its structure; 0 or the exit code after reporting.
int readChecked(const std::string &name, std::string &block, int malformedExit)
{
    if (int code = readInput(name, block))
        return code;
    std::string where;
    if (!sdo::checkBlock(bytesOf(block), block.size(), 0, where))
        return fail(name + ": " + where, SM_STATUS_BAD_OBJECT, malformedExit);
    const size_t total = sdo::load16(bytesOf(block) + 6);
    if (total != block.size())
        return fail(name + ": offset " + std::to_string(total) + ": bytes after the end of the block",
                    SM_STATUS_BAD_OBJECT, malformedExit);
    return kExitOk;
}

// Builds the binary form of a JSON object or array; 0 or a library status
// with where naming the JSON element at fault.
int32_t buildBlock(const Json &json, std::string &out, std::string &where);

int32_t valueOf(const Json &entry, uint8_t type, std::string &value, std::string &where)
{
    for (const char *nested : {"object", "array"}) {
        if (entry.contains(nested))
            return buildBlock(entry[nested], value, where);
    }
    if (entry.contains("bytes")) {
        if (!entry["bytes"].is_string() || !fromHex(entry["bytes"].get<std::string>(), value)) {
            where += ": \"bytes\" is not a hexadecimal string";
            return SM_STATUS_INVALID_PARAMETER;
        }
        return 0;
    }
    if (!entry.contains("text") || !entry["text"].is_string()) {
        where += ": neither \"bytes\", \"text\", \"object\" nor \"array\"";
        return SM_STATUS_INVALID_PARAMETER;
    }
    value.assign(65536, '\0');
    auto size = static_cast<uint32_t>(value.size());
    int32_t status = SMXLTUTF8ToTypeValue(entry["text"].get<std::string>().c_str(), value.data(), &size, type & 0x0F);
    if (status != 0) {
        where += ": \"text\" is not a value of its type";
        return status;
    }
    value.resize(size);
    return 0;
}

int32_t buildObject(const Json &entries, std::string &out, std::string &where)
{
    ConfigPtr config(SMSDOConfigAlloc());
    if (!config)
        return SM_STATUS_NO_MEMORY;
    const std::string base = where;
    for (size_t i = 0; i < entries.size(); ++i) {
        const Json &entry = entries[i];
        where = base + ".entries[" + std::to_string(i) + "]";
        if (!entry.is_object() || !entry.contains("id") || !entry["id"].is_number_unsigned() ||
            !entry.contains("type") || !entry["type"].is_number_unsigned() || entry["id"].get<uint32_t>() > 0xFFFF ||
            entry["type"].get<uint32_t>() > 0xFF) {
            where += ": needs \"id\" and \"type\" numbers of 16 and 8 bits";
            return SM_STATUS_INVALID_PARAMETER;
        }
        const auto id = entry["id"].get<uint16_t>();
        const auto type = entry["type"].get<uint8_t>();
        std::string value;
        if (int32_t status = valueOf(entry, type, value, where))
            return status;
        int32_t status =
            SMSDOConfigAddData(config.get(), id, type, value.data(), static_cast<uint32_t>(value.size()), 0);
        if (status != 0)
            return status;
    }
    where = base;
    uint32_t size = SMSDOConfigGetBinarySize(config.get());
    out.assign(size, '\0');
    return SMSDOConfigToBinary(config.get(), out.data(), &size);
}

int32_t buildArray(const Json &elements, std::string &out, std::string &where)
{
    std::vector<std::string> blocks;
    size_t total = sdo::kHeaderSize;
    const std::string base = where;
    for (size_t i = 0; i < elements.size(); ++i) {
        where = base + ".elements[" + std::to_string(i) + "]";
        std::string block;
        if (int32_t status = buildBlock(elements[i], block, where))
            return status;
        total += block.size();
        blocks.push_back(std::move(block));
    }
    where = base;
    if (total > 0xFFFF)
        return SM_STATUS_LIMIT_REACHED;
    out.assign(total, '\0');
    auto capacity = static_cast<uint32_t>(total);
    int32_t status = SMSDOBinaryArrayInitHeader(out.data(), capacity);
    for (const std::string &block : blocks) {
        if (status != 0)
            break;
        status = SMSDOBinaryArrayAddData(out.data(), &capacity, block.data(), static_cast<uint32_t>(block.size()));
    }
    return status;
}

int32_t buildBlock(const Json &json, std::string &out, std::string &where)
{
    if (json.is_object() && json.value("kind", "") == "object" && json.contains("entries") &&
        json["entries"].is_array())
        return buildObject(json["entries"], out, where);
    if (json.is_object() && json.value("kind", "") == "array" && json.contains("elements") &&
        json["elements"].is_array())
        return buildArray(json["elements"], out, where);
    where += ": not an object with \"kind\" and \"entries\" or \"elements\"";
    return SM_STATUS_INVALID_PARAMETER;
}

}  // namespace

void addSdoCommands(CLI::App &app, Outcome &outcome)
{
    CLI::App *sdo = app.add_subcommand("sdo", "Show, build and check SDO binary objects and arrays");
    sdo->require_subcommand(1);

    struct DumpOptions {
        std::string file;
        bool json = false;
    };
    auto dump = std::make_shared<DumpOptions>();
    CLI::App *dumpCommand = sdo->add_subcommand("dump", "Show a binary object or array as a tree or as JSON");
    dumpCommand->add_option("file", dump->file, "Binary file, or - for standard input")->required();
    dumpCommand->add_flag("--json", dump->json, "Write JSON that sdo build turns back into the same bytes");
    dumpCommand->callback([dump, &outcome] {
        std::string block;
        if ((outcome.exitCode = readChecked(dump->file, block, kExitMalformed)) != 0)
            return;
        if (dump->json) {
            // Text forms that are not valid UTF-8 are shown with replacements; "bytes" stays exact.
            std::cout << blockToJson(block).dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
        } else {
            printBlock(std::cout, block, "");
        }
    });

    struct BuildOptions {
        std::string file;
        std::string output = "-";
    };
    auto build = std::make_shared<BuildOptions>();
    CLI::App *buildCommand = sdo->add_subcommand("build", "Write the binary form of the JSON that sdo dump writes");
    buildCommand->add_option("file", build->file, "JSON file, or - for standard input")->required();
    buildCommand->add_option("-o,--output", build->output, "Binary file to write (standard output by default)");
    buildCommand->callback([build, &outcome] {
        std::string text;
        if ((outcome.exitCode = readInput(build->file, text)) != 0)
            return;
        Json json = Json::parse(text, nullptr, false);
        if (json.is_discarded()) {
            outcome.exitCode = fail(build->file + ": not JSON", SM_STATUS_INVALID_PARAMETER, kExitMalformed);
            return;
        }
        std::string block;
        std::string where = "$";
        if (int32_t status = buildBlock(json, block, where)) {
            outcome.exitCode = fail(build->file + ": " + where, status, kExitMalformed);
            return;
        }
        outcome.exitCode = writeOutput(build->output, block);
    });

    auto checkFile = std::make_shared<std::string>();
    CLI::App *checkCommand = sdo->add_subcommand("check", "Check that a file is a well-formed binary object or array");
    checkCommand->add_option("file", *checkFile, "Binary file, or - for standard input")->required();
    checkCommand->callback([checkFile, &outcome] {
        std::string block;
        outcome.exitCode = readChecked(*checkFile, block, kExitCheckFailed);
        if (outcome.exitCode == kExitOk)
            std::cout << *checkFile << ": ok\n";
    });
}

}  // namespace zktool
