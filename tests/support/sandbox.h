// A throw-away installation of the suite for tests: a registry file naming
// directories inside one temporary tree, with ZKSUPT_REGISTRY pointing at it.
//
//   <root>/qvreg.cfg                  the registry file
//   <root>/suite                      install path of the suite (tarn, product -1)
//   <root>/suite/meridian             install path of product 35 (Meridian)
//   <root>/suite/meridian/ini         its ini directory
//   <root>/var/data, var/data/.ipc    var-data directory and the IPC key directory
//   <root>/var/log                    log directory
#pragma once

#include <string>

namespace zksupt::test {

class Sandbox {
  public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    const std::string &root() const { return root_; }
    std::string path(const std::string &relative) const { return root_ + "/" + relative; }
    std::string registryFile() const { return path("qvreg.cfg"); }
    std::string installDir() const { return path("suite/meridian"); }
    std::string suiteDir() const { return path("suite"); }
    std::string iniDir() const { return path("suite/meridian/ini"); }
    std::string varDataDir() const { return path("var/data"); }
    std::string ipcDir() const { return path("var/data/.ipc"); }
    std::string logDir() const { return path("var/log"); }

    // Writes a file under the root (parent directories made as needed) and
    // returns its full path.
    std::string writeFile(const std::string &relative, const std::string &contents) const;
    // Replaces the registry file's contents.
    void writeRegistry(const std::string &contents) const;
    // The registry file's contents as the sandbox first writes them.
    std::string defaultRegistry() const;

  private:
    std::string root_;
    std::string previousOverride_;
    bool hadOverride_ = false;
};

// The sandbox the test program's main made before attaching the library.
Sandbox &sandbox();

// Makes a fresh temporary directory and returns its path.
std::string makeTempDir(const char *prefix);

// A file's bytes; empty when it cannot be read.
std::string readFile(const std::string &path);

}  // namespace zksupt::test
