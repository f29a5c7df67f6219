// paths and expand: the product registry's directories and the install-path
// placeholder.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/constants.h>
#include <zksupt/frame.h>
#include <zksupt/status.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>

namespace zktool {
namespace {

// The registry has no call that lists its products, so the tool names them.
const int32_t kProducts[] = {-1, 33, 34, 44, 88, 45, 35};

struct PathKind {
    uint32_t kind;
    const char *name;
};
const PathKind kPathKinds[] = {{2, "installpath"}, {4, "vardatapath"}, {8, "logpath"},
                               {16, "configtool"}, {64, "inipath"},    {128, "binpath"}};

// A product given by short name or ID; 0 when there is none.
int32_t productOf(const std::string &word)
{
    if (int32_t id = SMProductSIDToID(word.c_str()))
        return id;
    char *end = nullptr;
    long id = std::strtol(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0')
        return 0;
    for (int32_t known : kProducts) {
        if (known == id)
            return known;
    }
    return 0;
}

std::string shortName(int32_t product)
{
    std::unique_ptr<char, void (*)(void *)> name(SMProductIDToSID(product), SMFreeMem);
    return name ? name.get() : std::to_string(product);
}

int printPaths(const std::string &product)
{
    std::vector<int32_t> products(std::begin(kProducts), std::end(kProducts));
    if (!product.empty()) {
        int32_t id = productOf(product);
        if (id == 0)
            return fail("unknown product \"" + product + "\"", SM_STATUS_NOT_FOUND, kExitNotFound);
        products = {id};
    }
    for (int32_t id : products) {
        for (const PathKind &kind : kPathKinds) {
            char path[4096];
            uint32_t size = sizeof path;
            if (SMGetPathByProductIDandType(id, kind.kind, path, &size) != 0)
                continue;
            std::cout << shortName(id) << "." << kind.name << "=" << path << "\n";
        }
    }
    return kExitOk;
}

int expand(const std::string &text)
{
    std::string out(text.size() + 4096, '\0');
    auto size = static_cast<uint32_t>(out.size());
    int32_t status = SMExpandQvInstallPathString(text.c_str(), out.data(), &size);
    if (status == SM_STATUS_BUFFER_TOO_SMALL) {
        out.assign(size, '\0');
        status = SMExpandQvInstallPathString(text.c_str(), out.data(), &size);
    }
    if (status != 0)
        return fail("expand", status, exitCodeFor(status));
    std::cout << out.c_str() << "\n";
    return kExitOk;
}

// Which registry file the library reads, seen as the library reads it: the
// places a registry file can be are watched for opens while a query for a
// product no table holds makes the library load its registry file afresh.
// The tool names the places but does not choose among them.
int printRegistryFile()
{
    const int watcher = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (watcher < 0)
        return fail("registry: cannot watch files", SM_STATUS_FAILURE, kExitFailed);
    std::map<int, std::string> watched;
    std::vector<std::string> places;
    if (const char *override = std::getenv("ZKSUPT_REGISTRY"))
        places.emplace_back(override);
    places.emplace_back("/etc/qvreg.cfg");
    places.emplace_back("/usr/lib/ext/vexa/qvreg.cfg");
    for (const std::string &place : places) {
        const int watch = inotify_add_watch(watcher, place.c_str(), IN_OPEN);
        if (watch >= 0)
            watched.emplace(watch, place);
    }

    char path[16];
    uint32_t size = sizeof path;
    constexpr int32_t kNoProduct = 0;
    SMGetPathByProductIDandType(kNoProduct, SM_PATH_KIND_INSTALL, path, &size);

    std::string opened;
    alignas(inotify_event) char events[4096];
    const ssize_t length = watched.empty() ? 0 : read(watcher, events, sizeof events);
    for (ssize_t at = 0; opened.empty() && at < length;) {
        const auto *event = reinterpret_cast<const inotify_event *>(events + at);
        if (const auto place = watched.find(event->wd); place != watched.end())
            opened = place->second;
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    close(watcher);
    if (opened.empty())
        return fail("registry: the library reads no registry file", SM_STATUS_FILE_NOT_FOUND, kExitNotFound);
    std::cout << opened << "\n";
    return kExitOk;
}

}  // namespace

void addPathCommands(CLI::App &app, Outcome &outcome)
{
    auto product = std::make_shared<std::string>();
    CLI::App *paths = app.add_subcommand("paths", "Show the product registry's directories");
    paths->add_option("product", *product, "Product short name or ID (every product by default)");
    paths->callback([product, &outcome] { outcome.exitCode = printPaths(*product); });

    CLI::App *registry = app.add_subcommand("registry", "Show which product registry file the library reads");
    registry->callback([&outcome] { outcome.exitCode = printRegistryFile(); });

    auto text = std::make_shared<std::string>();
    CLI::App *expandCommand = app.add_subcommand("expand", "Replace @qvinstallpath@ by the suite's install path");
    expandCommand->add_option("text", *text, "Text to expand")->required();
    expandCommand->callback([text, &outcome] { outcome.exitCode = expand(*text); });
}

}  // namespace zktool
