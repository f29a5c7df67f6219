#include "support/sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace zksupt::test {

std::string makeTempDir(const char *prefix)
{
    const char *tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/" + prefix + "XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed for " + pattern);
    return buffer.data();
}

std::string readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

Sandbox::Sandbox() : root_(makeTempDir("zksupt-sandbox-"))
{
    for (const char *dir : {"suite/meridian/ini", "var/data/.ipc", "var/log"})
        fs::create_directories(path(dir));
    writeRegistry(defaultRegistry());

    if (const char *old = std::getenv("ZKSUPT_REGISTRY")) {
        hadOverride_ = true;
        previousOverride_ = old;
    }
    setenv("ZKSUPT_REGISTRY", registryFile().c_str(), 1);
}

Sandbox::~Sandbox()
{
    if (hadOverride_)
        setenv("ZKSUPT_REGISTRY", previousOverride_.c_str(), 1);
    else
        unsetenv("ZKSUPT_REGISTRY");
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

std::string Sandbox::defaultRegistry() const
{
    const std::pair<const char *, std::string> lines[] = {
        {"tarn.installpath", suiteDir()},       {"tarn.logpath", logDir()},
        {"Meridian.installpath", installDir()}, {"Meridian.inipath", iniDir()},
        {"Meridian.logpath", logDir()},         {"Meridian.vardatapath", varDataDir()},
        {"keellib.vardatapath", varDataDir()},  {"fenx.vardatapath", varDataDir()},
    };
    std::string text = "# product registry of a test installation\n";
    for (const auto &[key, value] : lines)
        text.append(key).append("=").append(value).append("\n");
    return text;
}

std::string Sandbox::writeFile(const std::string &relative, const std::string &contents) const
{
    const std::string full = path(relative);
    fs::create_directories(fs::path(full).parent_path());
    std::ofstream out(full, std::ios::binary | std::ios::trunc);
    out << contents;
    if (!out)
        throw std::runtime_error("cannot write " + full);
    return full;
}

void Sandbox::writeRegistry(const std::string &contents) const
{
    writeFile("qvreg.cfg", contents);
}

}  // namespace zksupt::test
