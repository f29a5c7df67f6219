// log show, append, clear, path and rotate: the suite's event logs.
#include "common.h"

#include <zksupt/log.h>
#include <zksupt/status.h>

#include <strings.h>
#include <sys/stat.h>

#include <cstring>
#include <ctime>
#include <iostream>
#include <memory>

namespace zktool {
namespace {

// The text log starts with a fixed block of this many bytes before its records.
constexpr size_t kHeaderBlockSize = 256;

struct Named {
    const char *name;
    uint32_t value;
    const char *shown;  // how the log writes it
};
const Named kTypes[] = {{"none", SM_LOG_TYPE_NONE, "None"},
                        {"error", SM_LOG_TYPE_ERROR, "Error"},
                        {"warning", SM_LOG_TYPE_WARNING, "Warning"},
                        {"information", SM_LOG_TYPE_INFORMATION, "Information"},
                        {"audit-success", SM_LOG_TYPE_AUDIT_SUCCESS, "Audit Success"},
                        {"audit-failure", SM_LOG_TYPE_AUDIT_FAILURE, "Audit Failure"}};
const Named kCategories[] = {{"lodestar", SM_LOG_CATEGORY_LODESTAR_ENGINE, "Lodestar Engine"},
                             {"meridian", SM_LOG_CATEGORY_MERIDIAN_SERVICE, "Meridian Service"},
                             {"pell", SM_LOG_CATEGORY_PELL_SERVICE, "Pell Service"},
                             {"quillon", SM_LOG_CATEGORY_QUILLON_CONNECTIONS_SERVICE, "Quillon Connections Service"},
                             {"tessel", SM_LOG_CATEGORY_TESSEL_FRAMEWORK, "Tessel Framework"},
                             {"varve", SM_LOG_CATEGORY_VARVE_MANAGEMENT, "Varve Management"}};

// A type or category by short name, shown name or number; null when unknown.
template <size_t N> const Named *lookUp(const Named (&table)[N], const std::string &word)
{
    for (const Named &row : table) {
        if (strcasecmp(word.c_str(), row.name) == 0 || strcasecmp(word.c_str(), row.shown) == 0 ||
            word == std::to_string(row.value))
            return &row;
    }
    return nullptr;
}

int32_t logPath(uint32_t target, bool backup, std::string &path)
{
    char buffer[4096];
    uint32_t size = sizeof buffer;
    int32_t status =
        backup ? SMGetBackupLogPathFileName(target, buffer, &size) : SMGetLogPathFileName(target, buffer, &size);
    if (status == 0)
        path = buffer;
    return status;
}

void appendUtf8(std::string &out, uint32_t unit)
{
    if (unit < 0x80) {
        out += static_cast<char>(unit);
    } else if (unit < 0x800) {
        out += static_cast<char>(0xC0 | (unit >> 6));
        out += static_cast<char>(0x80 | (unit & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (unit >> 12));
        out += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (unit & 0x3F));
    }
}

// The records of the text log as UTF-8 lines; records are UCS-2 in host order after the fixed header block.
std::vector<std::vector<std::string>> decodeRecords(const std::string &bytes)
{
    std::vector<std::vector<std::string>> records;
    std::string line;
    auto endLine = [&records, &line] {
        if (line.rfind("EventID:", 0) == 0)
            records.emplace_back();
        if (!records.empty())
            records.back().push_back(line);
        line.clear();
    };
    const size_t start = bytes.size() >= kHeaderBlockSize ? kHeaderBlockSize : bytes.size();
    for (size_t at = start; at + 1 < bytes.size(); at += 2) {
        uint16_t unit;
        std::memcpy(&unit, bytes.data() + at, sizeof unit);
        if (unit == '\r')
            continue;
        if (unit == '\n') {
            endLine();
            continue;
        }
        appendUtf8(line, unit);
    }
    if (!line.empty())
        endLine();
    for (auto &record : records) {
        while (!record.empty() && record.back().empty())
            record.pop_back();
    }
    return records;
}

std::string field(const std::vector<std::string> &record, const std::string &label)
{
    for (const std::string &line : record) {
        if (line.rfind(label, 0) == 0)
            return line.substr(label.size());
    }
    return "";
}

// "YYYY-MM-DD", "YYYY-MM-DD HH:MM[:SS]" in local time, or "@SECONDS"; -1 when it is neither.
time_t parseSince(const std::string &text)
{
    if (!text.empty() && text[0] == '@') {
        char *end = nullptr;
        long long seconds = std::strtoll(text.c_str() + 1, &end, 10);
        return (*end == '\0' && text.size() > 1) ? static_cast<time_t>(seconds) : -1;
    }
    for (const char *format : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%d %H:%M", "%Y-%m-%d"}) {
        struct tm parts {};
        const char *end = strptime(text.c_str(), format, &parts);
        if (end && *end == '\0') {
            parts.tm_isdst = -1;
            return mktime(&parts);
        }
    }
    return -1;
}

time_t recordTime(const std::vector<std::string> &record)
{
    struct tm parts {};
    const std::string text = field(record, "Date and Time: ");
    if (!strptime(text.c_str(), "%a %b %d %H:%M:%S %Y", &parts))
        return -1;
    parts.tm_isdst = -1;
    return mktime(&parts);
}

struct ShowOptions {
    bool xml = false;
    bool backup = false;
    std::string type;
    std::string category;
    std::string since;
};

int show(const ShowOptions &o)
{
    std::string path;
    if (int32_t status = logPath(o.xml ? SM_LOG_TARGET_XML : SM_LOG_TARGET_TEXT, o.backup, path))
        return fail("log path", status, exitCodeFor(status));
    std::string bytes;
    if (int code = readInput(path, bytes))
        return code;
    if (o.xml) {
        std::cout << bytes;
        return kExitOk;
    }
    const Named *type = o.type.empty() ? nullptr : lookUp(kTypes, o.type);
    const Named *category = o.category.empty() ? nullptr : lookUp(kCategories, o.category);
    const time_t since = o.since.empty() ? 0 : parseSince(o.since);
    if ((!o.type.empty() && !type) || (!o.category.empty() && !category) || since < 0)
        return fail("log show: unknown type, category or date", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    bool first = true;
    for (const auto &record : decodeRecords(bytes)) {
        if (type && field(record, "Type: ") != type->shown)
            continue;
        if (category && field(record, "Category: ") != category->shown)
            continue;
        if (since > 0 && recordTime(record) < since)
            continue;
        if (!first)
            std::cout << "\n";
        first = false;
        for (const std::string &line : record)
            std::cout << line << "\n";
    }
    return kExitOk;
}

struct AppendOptions {
    std::string type = "information";
    std::string category = "meridian";
    std::string source = "zksupt";
    int32_t id = 0;
    std::string text;
    std::string dataFile;
    bool xml = false;
};

off_t fileSize(const std::string &path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_size : -1;
}

int append(const AppendOptions &o)
{
    const Named *type = lookUp(kTypes, o.type);
    const Named *category = lookUp(kCategories, o.category);
    if (!type || !category)
        return fail("log append: unknown type or category", SM_STATUS_INVALID_PARAMETER, kExitUsage);
    std::string data;
    if (!o.dataFile.empty()) {
        if (int code = readInput(o.dataFile, data))
            return code;
    }
    std::string path;
    if (int32_t status = logPath(SM_LOG_TARGET_TEXT, false, path))
        return fail("log path", status, exitCodeFor(status));
    // The library does not report the text log's own result: a record that
    // was written makes the file grow.
    const off_t before = fileSize(path);
    uint32_t targets = SM_LOG_TARGET_TEXT | (o.xml ? SM_LOG_TARGET_XML : 0);
    int32_t status =
        SMAppendToLog(targets, type->value, static_cast<uint16_t>(category->value), o.id, o.source.c_str(),
                      o.text.c_str(), data.empty() ? nullptr : data.data(), static_cast<uint32_t>(data.size()));
    if (status != 0)
        return fail("log append", status, exitCodeFor(status));
    if (fileSize(path) <= before)
        return fail(path + ": the record was not written", SM_STATUS_FAILURE, kExitFailed);
    return kExitOk;
}

}  // namespace

void addLogCommands(CLI::App &app, Outcome &outcome)
{
    CLI::App *log = app.add_subcommand("log", "Show and write the suite's event logs");
    log->require_subcommand(1);
    const std::string types = "Event type: none, error, warning, information, audit-success, audit-failure";
    const std::string categories = "Category: lodestar, meridian, pell, quillon, tessel, varve, or 1-6";

    auto showOptions = std::make_shared<ShowOptions>();
    CLI::App *showCommand = log->add_subcommand("show", "Show the event log as UTF-8 text, one event per block");
    showCommand->add_flag("--xml", showOptions->xml, "Show the XML event log instead (no filters)");
    showCommand->add_flag("--backup", showOptions->backup, "Show the backup of the log");
    showCommand->add_option("--type", showOptions->type, types);
    showCommand->add_option("--category", showOptions->category, categories);
    showCommand->add_option("--since", showOptions->since, "Only events from YYYY-MM-DD[ HH:MM[:SS]] or @SECONDS on");
    showCommand->callback([showOptions, &outcome] { outcome.exitCode = show(*showOptions); });

    auto appendOptions = std::make_shared<AppendOptions>();
    CLI::App *appendCommand = log->add_subcommand("append", "Add an event to the text event log");
    appendCommand->add_option("--type", appendOptions->type, types + " (information by default)");
    appendCommand->add_option("--category", appendOptions->category, categories + " (meridian by default)");
    appendCommand->add_option("--source", appendOptions->source, "Source of the event (zksupt by default)");
    appendCommand->add_option("--id", appendOptions->id, "Event ID (0 by default)");
    appendCommand->add_option("--data", appendOptions->dataFile, "File whose bytes go with the event");
    appendCommand->add_flag("--xml", appendOptions->xml, "Add it to the XML event log too");
    appendCommand->add_option("text", appendOptions->text, "Description of the event")->required();
    appendCommand->callback([appendOptions, &outcome] { outcome.exitCode = append(*appendOptions); });

    auto clearXml = std::make_shared<bool>(false);
    CLI::App *clearCommand = log->add_subcommand("clear", "Delete the event log and record that it was cleared");
    clearCommand->add_flag("--xml", *clearXml, "Clear the XML event log too");
    clearCommand->callback([clearXml, &outcome] {
        uint32_t targets = SM_LOG_TARGET_TEXT | (*clearXml ? SM_LOG_TARGET_XML : 0);
        int32_t status = SMClearLog(targets, SM_LOG_CATEGORY_MERIDIAN_SERVICE, "zksupt");
        outcome.exitCode = status == 0 ? kExitOk : fail("log clear", status, exitCodeFor(status));
    });

    struct PathOptions {
        bool xml = false;
        bool backup = false;
    };
    auto pathOptions = std::make_shared<PathOptions>();
    CLI::App *pathCommand = log->add_subcommand("path", "Print where the event log is");
    pathCommand->add_flag("--xml", pathOptions->xml, "The XML event log");
    pathCommand->add_flag("--backup", pathOptions->backup, "Its backup");
    pathCommand->callback([pathOptions, &outcome] {
        std::string path;
        int32_t status = logPath(pathOptions->xml ? SM_LOG_TARGET_XML : SM_LOG_TARGET_TEXT, pathOptions->backup, path);
        if (status != 0) {
            outcome.exitCode = fail("log path", status, exitCodeFor(status));
            return;
        }
        std::cout << path << "\n";
    });

    struct RotateOptions {
        std::string file;
        uint32_t maxSize = 0;
        uint32_t keep = 0;
    };
    auto rotateOptions = std::make_shared<RotateOptions>();
    CLI::App *rotateCommand = log->add_subcommand("rotate", "Rotate a plain-text log when it is larger than --max");
    rotateCommand->add_option("file", rotateOptions->file, "Log file")->required();
    rotateCommand->add_option("--max", rotateOptions->maxSize, "Size in bytes above which it is rotated")->required();
    rotateCommand->add_option("--keep", rotateOptions->keep, "Generations to keep (0 deletes the file)")->required();
    rotateCommand->callback([rotateOptions, &outcome] {
        int32_t status = SMFileRotateCheck(rotateOptions->file.c_str(), rotateOptions->maxSize, rotateOptions->keep);
        outcome.exitCode = status == 0 ? kExitOk : fail(rotateOptions->file, status, exitCodeFor(status));
    });
}

}  // namespace zktool
