// ini, log and ipc commands against the sandbox installation.
#include <gtest/gtest.h>

#include "run_tool.h"
#include "support/child.h"
#include "support/sandbox.h"

#include <zksupt/config.h>
#include <zksupt/ipc.h>

#include <signal.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

namespace zksupt::test {
namespace {

TEST(ToolIni, SetThenGetGivesTheValueBackForEveryType)
{
    const std::string file = sandbox().path("tool-ini/settings.ini");
    const struct {
        const char *type;
        const char *written;
        const char *read;
    } cases[] = {
        {"string", "a value with = and blanks", "a value with = and blanks"},
        {"uint32", "4294967295", "4294967295"},
        {"int32", "-2147483648", "-2147483648"},
        {"uint64", "18446744073709551615", "18446744073709551615"},
        {"int64", "-9000000000", "-9000000000"},
        {"bool", "true", "TRUE"},
        {"double", "2.5", "2.50000000"},
        {"binary", "0x01,0xAB,0x00", "0x01,0xAB,0x00"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type);
        const ToolRun set = runTool({"ini", "set", file, "Section", c.type, c.written, "--type", c.type});
        ASSERT_EQ(set.exitCode, 0) << set.err;
        const ToolRun got = runTool({"ini", "get", file, "Section", c.type, "--type", c.type});
        EXPECT_EQ(got.exitCode, 0) << got.err;
        EXPECT_EQ(got.out, std::string(c.read) + "\n");
    }
    const ToolRun listed = runTool({"ini", "list", file});
    EXPECT_EQ(listed.out, "[Section]\n");
    unlink(file.c_str());
}

TEST(ToolIni, AbsentThingsAndBadValuesFailWithTheirStatus)
{
    const std::string file = sandbox().writeFile("tool-ini/present.ini", "[Here]\nkey=1\n");
    const struct {
        std::vector<std::string> args;
        int exitCode;
        std::string message;
    } cases[] = {
        {{"ini", "get", file, "Elsewhere", "key"}, 5, file + " [Elsewhere] key: section not found (0x106)"},
        {{"ini", "get", file, "Here", "other"}, 5, file + " [Here] other: key not found (0x107)"},
        {{"ini", "get", sandbox().path("tool-ini/none.ini"), "Here", "key"},
         3,
         sandbox().path("tool-ini/none.ini") + " [Here] key: file open failed (0x104)"},
        {{"ini", "set", file, "Here", "key", "12x", "--type", "uint32"},
         4,
         file + " [Here] key: \"12x\" is not a uint32: bad length (0x108)"},
        {{"ini", "delete", file, "Here", "other"}, 5, file + " [Here] other: key not found (0x107)"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        const ToolRun run = runTool(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_EQ(run.err, "zksupt: " + c.message + "\n");
    }
    // A deleted key is gone, its section stays.
    EXPECT_EQ(runTool({"ini", "delete", file, "Here", "key"}).exitCode, 0);
    EXPECT_EQ(runTool({"ini", "get", file, "Here", "key"}).exitCode, 5);
    EXPECT_EQ(runTool({"ini", "list", file}).out, "[Here]\n");
    unlink(file.c_str());
}

TEST(ToolLog, AppendedEventsShowAndFilter)
{
    const ToolRun path = runTool({"log", "path"});
    ASSERT_EQ(path.exitCode, 0);
    EXPECT_EQ(path.out, sandbox().logDir() + "/log/zksys32.log\n");
    const std::string log = sandbox().logDir() + "/log/zksys32.log";
    unlink(log.c_str());

    ASSERT_EQ(runTool({"log", "append", "--type", "warning", "--category", "pell", "--source", "disk watch", "--id",
                       "-12", "Disk is nearly full: 97 %"})
                  .exitCode,
              0);
    ASSERT_EQ(runTool({"log", "append", "--type", "error", "--category", "2", "Fan stopped"}).exitCode, 0);

    const ToolRun all = runTool({"log", "show"});
    ASSERT_EQ(all.exitCode, 0) << all.err;
    EXPECT_NE(all.out.find("EventID: -12\nSource: disk watch\nCategory: Pell Service\nType: Warning\n"),
              std::string::npos)
        << all.out;
    EXPECT_NE(all.out.find("Description:\nDisk is nearly full: 97 %\n"), std::string::npos) << all.out;
    EXPECT_NE(all.out.find("\n\nEventID: 0\nSource: zksupt\nCategory: Meridian Service\nType: Error\n"),
              std::string::npos)
        << all.out;

    const struct {
        std::vector<std::string> filter;
        bool warning;
        bool error;
    } filters[] = {
        {{"--type", "error"}, false, true},      {{"--type", "Warning"}, true, false},
        {{"--category", "pell"}, true, false},   {{"--category", "3", "--type", "error"}, false, false},
        {{"--since", "2000-01-01"}, true, true}, {{"--since", "2037-12-31 00:00"}, false, false},
    };
    for (const auto &f : filters) {
        std::vector<std::string> args = {"log", "show"};
        args.insert(args.end(), f.filter.begin(), f.filter.end());
        SCOPED_TRACE(args[2] + " " + args[3]);
        const ToolRun shown = runTool(args);
        EXPECT_EQ(shown.exitCode, 0);
        EXPECT_EQ(shown.out.find("nearly full") != std::string::npos, f.warning);
        EXPECT_EQ(shown.out.find("Fan stopped") != std::string::npos, f.error);
    }
    EXPECT_EQ(runTool({"log", "show", "--type", "loud"}).exitCode, 2);
    EXPECT_EQ(runTool({"log", "append", "--category", "9", "text"}).exitCode, 2);

    // Clearing leaves one record that says so.
    ASSERT_EQ(runTool({"log", "clear"}).exitCode, 0);
    const ToolRun cleared = runTool({"log", "show"});
    EXPECT_EQ(cleared.out.find("Fan stopped"), std::string::npos);
    EXPECT_NE(cleared.out.find("Log was cleared"), std::string::npos);
    unlink(log.c_str());
}

TEST(ToolLog, RotateMovesOnlyALogAboveItsLimit)
{
    const std::string log = sandbox().path("tool-rotate/app.log");
    const struct {
        size_t bytes;
        bool rotated;
    } cases[] = {{10, false}, {11, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bytes);
        sandbox().writeFile("tool-rotate/app.log", std::string(c.bytes, 'x'));
        EXPECT_EQ(runTool({"log", "rotate", log, "--max", "10", "--keep", "2"}).exitCode, 0);
        EXPECT_EQ(readFile(log + ".1").size(), c.rotated ? c.bytes : 0u);
        EXPECT_EQ(access(log.c_str(), F_OK) == 0, !c.rotated);
        unlink(log.c_str());
        unlink((log + ".1").c_str());
    }
    EXPECT_EQ(runTool({"log", "rotate", log, "--max", "ten", "--keep", "2"}).exitCode, 2);
    // A log that is not there cannot be shown.
    unlink((sandbox().logDir() + "/log/zksys32.log").c_str());
    const ToolRun missing = runTool({"log", "show"});
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_EQ(missing.err, "zksupt: " + sandbox().logDir() + "/log/zksys32.log: file not found (0x7)\n");
}

TEST(ToolIpc, KeysShowANamedSemaphoreAndItsValue)
{
    void *semaphore = SMSemaphoreCreate("tool keys test", 3);
    ASSERT_NE(semaphore, nullptr);
    const ToolRun keys = runTool({"ipc", "keys"});
    SMSemaphoreDestroy(semaphore);
    EXPECT_EQ(keys.exitCode, 0) << keys.err;
    EXPECT_EQ(keys.out.rfind("key file " + sandbox().ipcDir() + "/.lxsuptIPCini\n", 0), 0u) << keys.out;
    // The name is the tag and 32 digest digits; the value is the semaphore's.
    const size_t line = keys.out.find("\nzksupsmp");
    ASSERT_NE(line, std::string::npos) << keys.out;
    const std::string rest = keys.out.substr(line + 1 + 8 + 32);
    EXPECT_EQ(rest.rfind(" key ", 0), 0u) << rest;
    EXPECT_NE(rest.find(", value 3"), std::string::npos) << rest;
    // Once removed, the key stays in the file but its object is gone.
    EXPECT_NE(runTool({"ipc", "keys"}).out.find("): absent\n"), std::string::npos);
}

TEST(ToolIpc, CleanRemovesTheSetOfAKilledOwner)
{
    const std::string keyFile = sandbox().ipcDir() + "/.lxsuptIPCini";
    const int set = semget(IPC_PRIVATE, 1, 0600);
    ASSERT_GE(set, 0);
    // The owner: a child that would wait far longer than the test and is killed.
    const int owner = startChild([] {
        pause();
        return 0;
    });
    ASSERT_GT(owner, 0);
    const std::string setText = std::to_string(set);
    const std::string ownerText = std::to_string(owner);
    ASSERT_EQ(SMWriteINIPathFileValue("Semaphore List", setText.c_str(), 1, ownerText.c_str(),
                                      static_cast<uint32_t>(ownerText.size() + 1), keyFile.c_str(), 1),
              0);

    // While the owner runs, the set stays.
    ToolRun run = runTool({"ipc", "clean"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(semctl(set, 0, GETVAL), 0);
    const ToolRun keys = runTool({"ipc", "keys"});
    EXPECT_NE(keys.out.find("unnamed set " + setText + ": exists, owner " + ownerText + " (alive)"), std::string::npos)
        << keys.out;

    kill(owner, SIGKILL);
    waitForChild(owner, std::chrono::seconds(30));
    // The library removes such sets whenever a program attaches it, the tool
    // included, so the tool may find the work done before its own pass.
    run = runTool({"ipc", "clean"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.empty() || run.out == "removed set " + setText + " of ended process " + ownerText + "\n")
        << run.out;
    const bool removed = semctl(set, 0, GETVAL) < 0;
    EXPECT_TRUE(removed);
    if (!removed)
        semctl(set, 0, IPC_RMID);
    EXPECT_EQ(runTool({"ipc", "keys"}).out.find("unnamed set " + setText), std::string::npos);
}

}  // namespace
}  // namespace zksupt::test
