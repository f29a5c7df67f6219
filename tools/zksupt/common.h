// What every subcommand of the tool shares: exit codes, the error line,
// reading and writing files or the standard streams, hexadecimal text.
#pragma once

#include <CLI/CLI.hpp>

#include <zksupt/status.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zktool {

// Exit codes, each documented in zksupt(1).
enum ExitCode : int {
    kExitOk = 0,
    kExitCheckFailed = 1,  // sdo check found the input malformed
    kExitUsage = 2,        // the command line is wrong
    kExitNoFile = 3,       // a file could not be read or written
    kExitMalformed = 4,    // input is not what the command expects
    kExitNotFound = 5,     // the section, key, string or entry is not there
    kExitFailed = 6,       // the library refused or failed otherwise
};

// The name of a library status ("key not found"), or "unknown status".
std::string statusName(int32_t status);

// Writes "zksupt: <what>: <status name> (0x..)" to standard error and returns exitCode.
int fail(const std::string &what, int32_t status, int exitCode);

// The exit code a library status means for a command that reads or writes something.
int exitCodeFor(int32_t status);

// Every read and write waits for the file's lock.
constexpr int16_t kWaitForLock = 1;

// Calls read(buffer, &size) with a buffer of `first` bytes, and again with
// the size the library asks for while it answers BUFFER_TOO_SMALL with a
// larger need; on success out holds the *size bytes the call reported.
int32_t readGrowing(std::string &out, std::size_t first, const std::function<int32_t(char *, uint32_t *)> &read);
// A text value, or the NUL-separated list of a null key or section, of an
// INI file, read under the library's file lock.
int32_t readIniText(const char *section, const char *key, const std::string &path, std::string &out);

// Reads a whole file, or standard input for "-"; 0 or the exit code after reporting.
int readInput(const std::string &name, std::string &bytes);
// Writes bytes to a file, or standard output for "-"; 0 or the exit code after reporting.
int writeOutput(const std::string &name, const std::string &bytes);

std::string toHex(const void *bytes, size_t length);
// Parses pairs of hexadecimal digits; false for anything else.
bool fromHex(const std::string &text, std::string &bytes);

// Names of the value-type codes 0-15, as the tool shows and takes them.
extern const char *const kValueTypeNames[16];
// The code of a value-type name or number (0-16); -1 for anything else.
int valueTypeCode(const std::string &name);

// The result a subcommand's callback leaves for main to return.
struct Outcome {
    int exitCode = kExitOk;
};

// Each family adds its subcommands to the application.
void addSdoCommands(CLI::App &app, Outcome &outcome);
void addDigestCommands(CLI::App &app, Outcome &outcome);
void addIniCommands(CLI::App &app, Outcome &outcome);
void addPropCommands(CLI::App &app, Outcome &outcome);
void addPathCommands(CLI::App &app, Outcome &outcome);
void addLogCommands(CLI::App &app, Outcome &outcome);
void addIpcCommands(CLI::App &app, Outcome &outcome);
void addStringCommands(CLI::App &app, Outcome &outcome);

}  // namespace zktool
