// paths and expand: the product registry's directories and the install-path
// placeholder.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/frame.h>
#include <zksupt/status.h>

#include <iostream>
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

}  // namespace

void addPathCommands(CLI::App &app, Outcome &outcome)
{
    auto product = std::make_shared<std::string>();
    CLI::App *paths = app.add_subcommand("paths", "Show the product registry's directories");
    paths->add_option("product", *product, "Product short name or ID (every product by default)");
    paths->callback([product, &outcome] { outcome.exitCode = printPaths(*product); });

    auto text = std::make_shared<std::string>();
    CLI::App *expandCommand = app.add_subcommand("expand", "Replace @qvinstallpath@ by the suite's install path");
    expandCommand->add_option("text", *text, "Text to expand")->required();
    expandCommand->callback([text, &outcome] { outcome.exitCode = expand(*text); });
}

}  // namespace zktool
