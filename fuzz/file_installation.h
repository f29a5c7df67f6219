// What the fuzz targets of file formats share: a trap for a failed check,
// fresh directories removed with all they hold, and the library attached in
// an installation of the target's own (every INI or property-file call takes
// the file's cross-process lock, whose files live in its ".ipc").
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frame/lifecycle.h"

namespace zksupt::fuzz {

inline void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// A fresh directory, removed at the end with the files in it (copies a failed
// rewrite leaves included).
class Directory {
  public:
    Directory()
    {
        char name[] = "/tmp/zksupt-fuzz-XXXXXX";
        check(mkdtemp(name) != nullptr);
        path_ = name;
    }
    // Takes an existing directory to remove at the end.
    explicit Directory(std::string path) : path_(std::move(path)) {}
    ~Directory()
    {
        DIR *dir = opendir(path_.c_str());
        while (dirent *entry = readdir(dir)) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                unlink((path_ + "/" + entry->d_name).c_str());
        }
        closedir(dir);
        rmdir(path_.c_str());
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

inline void store(const std::string &path, const uint8_t *data, size_t size)
{
    std::FILE *file = std::fopen(path.c_str(), "wb");
    check(file != nullptr);
    check(std::fwrite(data, 1, size, file) == size);
    std::fclose(file);
}

inline std::string load(const std::string &path)
{
    std::string text;
    if (std::FILE *file = std::fopen(path.c_str(), "rb")) {
        char chunk[4096];
        std::size_t got = 0;
        while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0)
            text.append(chunk, got);
        std::fclose(file);
    }
    return text;
}

// A registry naming a var-data directory with its ".ipc", where the lock
// files go. Detached and removed at exit.
class Installation {
  public:
    Installation()
    {
        root_ = directory_.path();
        check(mkdir((root_ + "/.ipc").c_str(), 0700) == 0);
        const std::string registry = "keellib.vardatapath=" + root_ + "\n";
        store(root_ + "/qvreg.cfg", reinterpret_cast<const uint8_t *>(registry.data()), registry.size());
        setenv("ZKSUPT_REGISTRY", (root_ + "/qvreg.cfg").c_str(), 1);
        check(zksupt::frame::library().attach() == 1);
    }
    ~Installation()
    {
        zksupt::frame::library().detach();
        const Directory ipc(root_ + "/.ipc");
    }

  private:
    Directory directory_;
    std::string root_;
};

}  // namespace zksupt::fuzz
