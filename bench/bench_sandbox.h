// A throw-away installation for benchmarks that need the library attached
// (file locks, the name registry, the event logs): a registry file naming a
// var-data directory with its ".ipc" and a log directory, in a temporary
// tree removed at exit. The
// programs link the core statically, so they attach it themselves.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "frame/lifecycle.h"

namespace zksupt::bench {

class Installation {
  public:
    Installation()
    {
        const char *tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/zksupt-bench-XXXXXX";
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        if (mkdtemp(name.data()) == nullptr) {
            std::perror("mkdtemp");
            std::exit(1);
        }
        root_ = name.data();
        std::filesystem::create_directories(root_ + "/var/data/.ipc");
        std::filesystem::create_directories(root_ + "/var/log");
        std::ofstream(root_ + "/qvreg.cfg") << "tarn.installpath=" << root_ << "\nkeellib.vardatapath=" << root_
                                            << "/var/data\nMeridian.logpath=" << root_ << "/var/log\n";
        setenv("ZKSUPT_REGISTRY", (root_ + "/qvreg.cfg").c_str(), 1);
        if (frame::library().attach() != 1) {
            std::fprintf(stderr, "the library did not attach in %s\n", root_.c_str());
            std::exit(1);
        }
    }
    ~Installation()
    {
        frame::library().detach();
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    Installation(const Installation &) = delete;
    Installation &operator=(const Installation &) = delete;

    const std::string &root() const { return root_; }

  private:
    std::string root_;
};

// The installation of this benchmark program, made on first use.
inline Installation &installation()
{
    static Installation made;
    return made;
}

}  // namespace zksupt::bench
