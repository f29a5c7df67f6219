// Network addressing: the conversions as tables, the host name and DNS suffix,
// the lists' count contract against getifaddrs(), the IPv6 order over a
// synthetic if_inet6 table, the not-ready and missing-pointer answers.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/net.h>
#include <zksupt/status.h>

#include "net/address_lists.h"
#include "net/address_text.h"
#include "net/host_name.h"
#include "net/module.h"
#include "support/child.h"
#include "support/sandbox.h"

namespace zksupt::net {
namespace {

using Bytes = std::vector<unsigned char>;
constexpr char kUnwritten = '#';

Bytes bytesOf(uint32_t networkOrder)
{
    const auto *p = reinterpret_cast<const unsigned char *>(&networkOrder);
    return Bytes(p, p + 4);
}

TEST(NetText, DottedTextRewritingAndConversion)
{
    struct Row { const char *text, *rewritten; int32_t status; Bytes bytes; };
    const Row rows[] = {
        {"010.001.0.7", "10.1.0.7", 0, {10, 1, 0, 7}},
        {"010.1.1.1", "10.1.1.1", 0, {10, 1, 1, 1}},
        {"00.000.0.00", "0.0.0.0", 0, {0, 0, 0, 0}},
        {"192.0.2.100", "192.0.2.100", 0, {192, 0, 2, 100}},
        {"1.2.3", "1.2.3", 0, {1, 2, 0, 3}},  // inet_addr's short forms are kept
        {"255.255.255.255", "255.255.255.255", 0, {255, 255, 255, 255}},
        {"0xff.0xff.0xff.0xff", "ff.ff.ff.ff", 0, {255, 255, 255, 255}},
        {"0XFF.0xFf.0xff.0XFF", "XFF.Ff.ff.XFF", 0, {255, 255, 255, 255}},
        {"255.255.255.0255", "255.255.255.255", -1, {}},  // all ones, but not a broadcast spelling
        {"0x1f", "1f", -1, {}},
        {"x0x", "", -1, {}},
        {"256.1.1.1", "256.1.1.1", -1, {}},
        {"", "", -1, {}},
    };
    for (const Row &row : rows) {
        std::string rewritten(std::strlen(row.text) + 1, kUnwritten);
        rewriteDottedText(row.text, rewritten.data());
        EXPECT_STREQ(rewritten.c_str(), row.rewritten) << row.text;
        uint32_t address = 0x5A5A5A5A;
        EXPECT_EQ(SMIPAddrASCIIToNetwork(row.text, &address), row.status) << row.text;
        EXPECT_EQ(bytesOf(address), row.status == 0 ? row.bytes : bytesOf(0x5A5A5A5A)) << row.text;
    }
}

// Text to bytes and back for both families, then every capacity round the size.
TEST(NetText, FamiliesBothWaysWithSizes)
{
    struct Row { uint32_t family; const char *text; Bytes bytes; };
    const Row rows[] = {
        {1, "192.0.2.1", {192, 0, 2, 1}},
        {1, "255.255.255.255", {255, 255, 255, 255}},
        {2, "fe80::1", {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {2, "2001:db8::ffff:1:2", {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 1, 0, 2}},
        {2, "::ffff:10.1.2.3", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 10, 1, 2, 3}},
    };
    for (const Row &row : rows) {
        const auto length = static_cast<uint32_t>(row.bytes.size());
        const auto needed = static_cast<uint32_t>(std::strlen(row.text) + 1);
        Bytes bytes(20, 0xEE);
        uint32_t size = 20;
        ASSERT_EQ(SMInetAddrUTF8ToNetwork(row.family, row.text, bytes.data(), &size), 0) << row.text;
        EXPECT_EQ(size, length);
        EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + length), row.bytes);
        size = length - 1;
        EXPECT_EQ(SMInetAddrUTF8ToNetwork(row.family, row.text, bytes.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, length);

        for (uint32_t capacity : {needed + 5, needed, needed - 1, 0u}) {
            std::string text(64, kUnwritten);
            size = capacity;
            const int32_t status = SMInetAddrNetworkToUTF8(row.family, row.bytes.data(), length, text.data(), &size);
            EXPECT_EQ(status, capacity >= needed ? 0 : SM_STATUS_BUFFER_TOO_SMALL) << row.text << " in " << capacity;
            EXPECT_EQ(size, needed);
            EXPECT_EQ(text.substr(0, needed), status == 0 ? std::string(row.text, needed) : std::string(needed, kUnwritten));
            if (row.family == 1) {
                uint32_t network;
                std::memcpy(&network, row.bytes.data(), 4);
                std::string dotted(64, kUnwritten);
                size = capacity;
                EXPECT_EQ(SMIPAddrNetworkToASCII(network, dotted.data(), &size), status);
                EXPECT_EQ(dotted, text);
                EXPECT_EQ(size, needed);
            }
        }
        // The other family's length, and families that do not exist.
        std::string text(64, kUnwritten);
        size = 64;
        EXPECT_EQ(SMInetAddrNetworkToUTF8(3 - row.family, row.bytes.data(), length, text.data(), &size), SM_STATUS_INVALID_PARAMETER);
        for (uint32_t family : {0u, 3u, 0x10001u}) {
            EXPECT_EQ(SMInetAddrNetworkToUTF8(family, row.bytes.data(), length, text.data(), &size), SM_STATUS_INVALID_PARAMETER);
            EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, row.text, bytes.data(), &size), SM_STATUS_INVALID_PARAMETER);
        }
        EXPECT_EQ(text, std::string(64, kUnwritten));
    }
    uint32_t size = 16;
    unsigned char bytes[16];
    for (const char *bad : {"1.2.3", "::1", "", "1.2.3.4 "})
        EXPECT_EQ(SMInetAddrUTF8ToNetwork(1, bad, bytes, &size), SM_STATUS_INVALID_PARAMETER) << bad;
    EXPECT_EQ(SMInetAddrUTF8ToNetwork(2, "fe80::1::2", bytes, &size), SM_STATUS_INVALID_PARAMETER);
}

std::string systemHostName()
{
    char name[HOST_NAME_MAX + 1] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

TEST(NetHost, HostNameCutToEveryCapacity)
{
    const std::string name = systemHostName();
    const auto whole = static_cast<uint32_t>(name.size() + 1);
    for (uint32_t capacity : {whole + 10, whole, whole - 1, 2u, 1u, 0u}) {
        std::string buffer(whole + 10, kUnwritten);
        uint32_t size = capacity;
        const std::string expected = name.substr(0, capacity == 0 ? 0 : capacity - 1);
        EXPECT_EQ(SMGetIPHostName(buffer.data(), &size), capacity == 0 ? SM_STATUS_BUFFER_TOO_SMALL : 0);
        EXPECT_EQ(size, capacity == 0 ? whole : expected.size() + 1);
        EXPECT_EQ(buffer.substr(0, capacity == 0 ? 0 : expected.size() + 1), capacity == 0 ? "" : expected + '\0');
        EXPECT_EQ(buffer.find_first_not_of(kUnwritten, std::min(capacity, whole)), std::string::npos) << capacity;
    }

    const std::string shortName = name.substr(0, 63);
    const auto bytes = static_cast<uint32_t>(2 * (shortName.size() + 1));
    uint32_t size = 0;
    EXPECT_EQ(SMUCS2GetIPHostName(nullptr, &size), 0);
    EXPECT_EQ(size, bytes);
    std::vector<ucs2> units(shortName.size() + 4, 0xEEEE);
    size = bytes - 2;
    EXPECT_EQ(SMUCS2GetIPHostName(units.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
    size = bytes;
    ASSERT_EQ(SMUCS2GetIPHostName(units.data(), &size), 0);
    EXPECT_EQ(size, bytes);
    for (std::size_t i = 0; i <= shortName.size(); ++i)
        EXPECT_EQ(units[i], static_cast<unsigned char>(shortName.c_str()[i])) << i;
    EXPECT_EQ(units[shortName.size() + 1], 0xEEEE);
}

TEST(NetHost, DnsSuffixOfTheOfficialName)
{
    struct Row { const char *official, *suffix; };
    for (const Row &row : {Row{"vm", ""}, Row{"vm.example.org", "example.org"}, Row{"vm.", ""}, Row{".lan", "lan"}}) {
        const auto needed = static_cast<uint32_t>(std::strlen(row.suffix) + 1);
        uint32_t size = 0;
        EXPECT_EQ(dnsSuffixOf(row.official, nullptr, &size), 0);
        EXPECT_EQ(size, needed);
        std::string buffer(needed + 1, kUnwritten);
        size = needed - 1;
        EXPECT_EQ(dnsSuffixOf(row.official, buffer.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(buffer, std::string(needed + 1, kUnwritten));
        size = needed;
        EXPECT_EQ(dnsSuffixOf(row.official, buffer.data(), &size), 0);
        EXPECT_STREQ(buffer.c_str(), row.suffix);
        EXPECT_EQ(size, needed);
    }

    // The host itself, against the resolver's canonical name.
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    addrinfo *found = nullptr;
    const std::string host = systemHostName().substr(0, 63);
    char suffix[256] = {};
    uint32_t size = sizeof suffix;
    const int32_t status = SMGetDNSSuffixNameName(suffix, &size);
    if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0 || found->ai_canonname == nullptr) {
        EXPECT_EQ(status, SM_STATUS_FAILURE) << host << " does not resolve here";
    } else {
        const char *dot = std::strchr(found->ai_canonname, '.');
        EXPECT_EQ(status, 0);
        EXPECT_STREQ(suffix, dot != nullptr ? dot + 1 : "") << found->ai_canonname;
        EXPECT_EQ(size, std::strlen(suffix) + 1);
    }
    if (found != nullptr)
        freeaddrinfo(found);
}

// The addresses getifaddrs() reports for interfaces the lists keep, as text:
// IPv4 of running interfaces that are not loopback or point-to-point, IPv6 of
// interfaces that are not loopback or no-ARP.
std::vector<std::string> addressesByGetifaddrs(int family)
{
    std::vector<std::string> texts;
    ifaddrs *all = nullptr;
    if (getifaddrs(&all) != 0)
        return {"getifaddrs failed"};
    for (const ifaddrs *at = all; at != nullptr; at = at->ifa_next) {
        if (at->ifa_addr == nullptr || at->ifa_addr->sa_family != family)
            continue;
        const bool kept = family == AF_INET
                              ? (at->ifa_flags & (IFF_LOOPBACK | IFF_POINTOPOINT)) == 0 && (at->ifa_flags & IFF_RUNNING) != 0
                              : (at->ifa_flags & (IFF_LOOPBACK | IFF_NOARP)) == 0;
        char text[INET6_ADDRSTRLEN];
        const void *address = family == AF_INET ? static_cast<const void *>(&reinterpret_cast<sockaddr_in *>(at->ifa_addr)->sin_addr)
                                                : &reinterpret_cast<sockaddr_in6 *>(at->ifa_addr)->sin6_addr;
        if (kept && inet_ntop(family, address, text, sizeof text) != nullptr)
            texts.push_back(text);
    }
    freeifaddrs(all);
    return texts;
}

using Lister = int32_t (*)(SMInetAddrEntry *, uint32_t *);

// Asks with capacity 0, then with room, then one entry short; returns the texts.
std::vector<std::string> listWithEveryCapacity(Lister list, uint16_t family)
{
    uint32_t count = 0;
    const int32_t sizing = list(nullptr, &count);
    EXPECT_EQ(sizing, count == 0 ? 0 : SM_STATUS_BUFFER_TOO_SMALL);
    const uint32_t found = count;
    std::vector<SMInetAddrEntry> entries(found + 2);
    std::memset(entries.data(), kUnwritten, entries.size() * sizeof(SMInetAddrEntry));
    const std::vector<SMInetAddrEntry> blank = entries;
    count = found + 2;
    EXPECT_EQ(list(entries.data(), &count), 0);
    EXPECT_EQ(count, found);
    std::vector<std::string> texts;
    for (uint32_t i = 0; i < found; ++i) {
        EXPECT_TRUE(entries[i].family == family || family == 0) << entries[i].family;
        EXPECT_EQ(entries[i].reserved, 0);
        texts.push_back(entries[i].address);
    }
    EXPECT_EQ(std::memcmp(&entries[found], &blank[found], 2 * sizeof(SMInetAddrEntry)), 0);
    if (found > 0) {
        count = found - 1;
        EXPECT_EQ(list(entries.data(), &count), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(count, found);
    }
    return texts;
}

std::vector<std::string> sorted(std::vector<std::string> texts)
{
    std::sort(texts.begin(), texts.end());
    return texts;
}

TEST(NetLists, CountContractAgainstGetifaddrs)
{
    const auto ipv4 = addressesByGetifaddrs(AF_INET);
    const auto ipv6 = addressesByGetifaddrs(AF_INET6);
    if (!ipv4.empty() && ipv4[0] == "getifaddrs failed")
        GTEST_SKIP() << "getifaddrs() is not served here (netlink not emulated?), no list to compare with";

    const auto byIpv4List = listWithEveryCapacity([](SMInetAddrEntry *e, uint32_t *n) { return SMGetIPAddrStrList(e, n, 0); }, 1);
    EXPECT_EQ(sorted(byIpv4List), sorted(ipv4));
    const auto onlyIpv4 = listWithEveryCapacity([](SMInetAddrEntry *e, uint32_t *n) { return SMGetInetAddrStrList(1, n, e); }, 1);
    EXPECT_EQ(onlyIpv4, byIpv4List);
    const auto onlyIpv6 = listWithEveryCapacity([](SMInetAddrEntry *e, uint32_t *n) { return SMGetInetAddrStrList(2, n, e); }, 2);
    EXPECT_EQ(sorted(onlyIpv6), sorted(ipv6));
    auto both = listWithEveryCapacity([](SMInetAddrEntry *e, uint32_t *n) { return SMGetInetAddrStrList(0, n, e); }, 0);
    auto expected = byIpv4List;
    expected.insert(expected.end(), onlyIpv6.begin(), onlyIpv6.end());
    EXPECT_EQ(both, expected);

    // Link-local addresses come last.
    const auto linkLocal = [](const std::string &text) { return text.rfind("fe8", 0) == 0 || text.rfind("fe9", 0) == 0 || text.rfind("fea", 0) == 0 || text.rfind("feb", 0) == 0; };
    EXPECT_TRUE(std::is_partitioned(onlyIpv6.begin(), onlyIpv6.end(), [&](const std::string &t) { return !linkLocal(t); }));
    uint32_t count = 0;
    EXPECT_EQ(SMGetInetAddrStrList(3, &count, nullptr), SM_STATUS_INVALID_PARAMETER);
}

struct FlagsByName final : InterfaceFlags {
    std::map<std::string, uint32_t> table;
    bool flags(const char *name, uint32_t &flags) const noexcept override
    {
        const auto found = table.find(name);
        return found != table.end() && (flags = found->second, true);
    }
};

TEST(NetLists, Ipv6TableOrderAndFilter)
{
    const std::string table =
        "fe8000000000000000fc00fffe000001 04 40 20 80     eth0\n"
        "20010db8000000000000000000000001 04 40 00 80     eth0\n"
        "fec00000000000000000000000000005 05 40 40 80     eth1\n"
        "00000000000000000000000000000001 01 80 10 80       lo\n"
        "20010db8000000000000000000000009 07 40 00 80     sit0\n"
        "20010db800000000000000000000000a 08 40 00 80     gone\n"
        "fe800000000000000000000000000002 100 40 20 80 eth1\n"
        "fd00000000000000000000000000000g 04 40 00 80     eth0\n"
        "fd000000000000000000000000000002 04 40 00 80\n"
        "fd00000000000000000000000000002 04 40 00 80      eth0\n"
        "fd000000000000000000000000000003 04 40 00 80 sixteen-letters\n"
        "fd000000000000000000000000000004 04 40 00 80 eth1 trailing words\n";
    const std::string path = test::sandbox().writeFile("net/if_inet6", table + std::string(300, 'f') + " 04 40 00 80 eth0\n");
    FlagsByName flags;
    flags.table = {{"eth0", IFF_UP | IFF_RUNNING}, {"eth1", IFF_UP}, {"lo", IFF_UP | IFF_LOOPBACK}, {"sit0", IFF_UP | IFF_NOARP}};
    const std::vector<std::string> expected = {"2001:db8::1", "fd00::4", "fec0::5", "fe80::fc:ff:fe00:1", "fe80::2"};

    for (uint32_t capacity : {8u, 5u, 2u, 0u}) {
        std::vector<SMInetAddrEntry> entries(8);
        EntryList list(entries.data(), capacity);
        ASSERT_EQ(appendIpv6(list, path.c_str(), flags), 0);
        EXPECT_EQ(list.count(), expected.size());
        EXPECT_EQ(list.status(), capacity < expected.size() ? SM_STATUS_BUFFER_TOO_SMALL : 0);
        for (uint32_t i = 0; i < std::min<std::size_t>(capacity, expected.size()); ++i)
            EXPECT_EQ(entries[i].address + std::string(entries[i].family == 2 ? "" : " bad family"), expected[i]);
    }
    EntryList none(nullptr, 0);
    EXPECT_EQ(appendIpv6(none, test::sandbox().path("net/absent").c_str(), flags), 0);
    EXPECT_EQ(none.count(), 0u);
}

// Every function answers 0x11 in a process where the network never started:
// the shared library, loaded without a registry file, attaches no module.
TEST(NetReady, NotReadyBeforeAndStillReadyAfterStop)
{
    const int result = test::runInChild([] {
        setenv("ZKSUPT_REGISTRY", test::sandbox().path("absent/qvreg.cfg").c_str(), 1);
        void *library = dlopen(ZKSUPT_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return 100;
        const auto fn = [library](const char *name) { return dlsym(library, name); };
        uint32_t size = 0;
        const int32_t answers[] = {
            reinterpret_cast<decltype(&SMGetIPHostName)>(fn("SMGetIPHostName"))(nullptr, nullptr),
            reinterpret_cast<decltype(&SMUCS2GetIPHostName)>(fn("SMUCS2GetIPHostName"))(nullptr, &size),
            reinterpret_cast<decltype(&SMGetDNSSuffixNameName)>(fn("SMGetDNSSuffixNameName"))(nullptr, &size),
            reinterpret_cast<decltype(&SMIPAddrASCIIToNetwork)>(fn("SMIPAddrASCIIToNetwork"))("1.2.3.4", &size),
            reinterpret_cast<decltype(&SMIPAddrNetworkToASCII)>(fn("SMIPAddrNetworkToASCII"))(0, nullptr, &size),
            reinterpret_cast<decltype(&SMInetAddrUTF8ToNetwork)>(fn("SMInetAddrUTF8ToNetwork"))(1, "1.2.3.4", nullptr, &size),
            reinterpret_cast<decltype(&SMInetAddrNetworkToUTF8)>(fn("SMInetAddrNetworkToUTF8"))(1, nullptr, 4, nullptr, &size),
            reinterpret_cast<decltype(&SMGetIPAddrStrList)>(fn("SMGetIPAddrStrList"))(nullptr, &size, 0),
            reinterpret_cast<decltype(&SMGetInetAddrStrList)>(fn("SMGetInetAddrStrList"))(0, &size, nullptr),
        };
        int wrong = 0;
        for (int32_t answer : answers)
            wrong += answer != SM_STATUS_NOT_READY;
        dlclose(library);
        // Stopping the module does not take readiness back: the set-up ran once.
        stopNetwork();
        if (networkStarted() || !networkReady() || SMIPAddrASCIIToNetwork("1.2.3.4", &size) != 0)
            return 101;
        return startNetwork() && networkStarted() ? wrong : 102;
    });
    EXPECT_EQ(result, 0) << "100: dlopen failed, 101/102: readiness after stop and start, else answers other than 0x11";
}

TEST(NetReady, MissingPointersAndRefusedSelections)
{
    uint32_t size = 16, address = 0;
    char text[16];
    SMInetAddrEntry entry;
    const int32_t answers[] = {
        SMGetIPHostName(nullptr, &size), SMGetIPHostName(text, nullptr), SMUCS2GetIPHostName(nullptr, nullptr),
        SMGetDNSSuffixNameName(text, nullptr), SMIPAddrASCIIToNetwork(nullptr, &address), SMIPAddrASCIIToNetwork("1.2.3.4", nullptr),
        SMIPAddrNetworkToASCII(0, nullptr, &size), SMIPAddrNetworkToASCII(0, text, nullptr),
        SMInetAddrUTF8ToNetwork(1, nullptr, text, &size), SMInetAddrUTF8ToNetwork(1, "1.2.3.4", nullptr, &size),
        SMInetAddrUTF8ToNetwork(1, "1.2.3.4", text, nullptr), SMInetAddrNetworkToUTF8(1, nullptr, 4, text, &size),
        SMInetAddrNetworkToUTF8(1, text, 4, nullptr, &size), SMInetAddrNetworkToUTF8(1, text, 4, text, nullptr),
        SMGetIPAddrStrList(&entry, nullptr, 0), SMGetIPAddrStrList(nullptr, &size, 0),
        SMGetInetAddrStrList(0, nullptr, &entry), SMGetInetAddrStrList(0, &size, nullptr),
    };
    for (std::size_t i = 0; i < std::size(answers); ++i)
        EXPECT_EQ(answers[i], SM_STATUS_BAD_ARGUMENT) << "call " << i;
}

// Calls from many threads at once give what one thread alone gets.
TEST(NetThreads, ConcurrentCallsAgree)
{
    const auto snapshot = [] {
        std::string all;
        char text[256];
        uint32_t size = sizeof text, address = 0;
        all += std::to_string(SMGetDNSSuffixNameName(text, &size)) + text + ";";
        SMIPAddrASCIIToNetwork("010.1.2.3", &address);
        size = sizeof text;
        SMIPAddrNetworkToASCII(address, text, &size);
        all += text;
        SMInetAddrEntry entries[32];
        uint32_t count = 32;
        all += std::to_string(SMGetInetAddrStrList(0, &count, entries));
        for (uint32_t i = 0; i < std::min(count, 32u); ++i)
            all += entries[i].address;
        return all;
    };
    const std::string alone = snapshot();
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (auto &result : results)
        threads.emplace_back([&result, &snapshot, &alone] {
            for (int round = 0; round < 20; ++round)
                result = snapshot() == alone ? "same" : snapshot();
        });
    for (auto &thread : threads)
        thread.join();
    for (const auto &result : results)
        EXPECT_EQ(result, "same");
}

}  // namespace
}  // namespace zksupt::net
