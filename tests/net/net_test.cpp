// Network addressing: conversions, host name and DNS suffix, the lists against
// getifaddrs() and a synthetic if_inet6 table, not-ready and missing pointers.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/status.h>

#include "net/address_lists.h"
#include "net/address_text.h"
#include "net/host_name.h"
#include "net/module.h"
#include "support/child.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace zksupt::net {
namespace {

using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;
using Bag = std::multiset<std::string>;
using test::textOut;

// {text, as rewritten for inet_addr, the address, or no bytes for FAILURE}
TEST(NetText, DottedTextRewritingAndConversion)
{
    const std::tuple<const char *, const char *, Bytes> rows[] = {
        {"010.001.0.7", "10.1.0.7", {10, 1, 0, 7}},
        {"00.000.0.00", "0.0.0.0", {0, 0, 0, 0}},
        {"192.0.2.100", "192.0.2.100", {192, 0, 2, 100}},
        {"1.2.3", "1.2.3", {1, 2, 0, 3}},  // inet_addr's short forms stay
        {"255.255.255.255", "255.255.255.255", {255, 255, 255, 255}},
        {"0xff.0xff.0xff.0xff", "ff.ff.ff.ff", {255, 255, 255, 255}},
        {"0XFF.0xFf.0xff.0XFF", "XFF.Ff.ff.XFF", {255, 255, 255, 255}},
        {"255.255.255.0255", "255.255.255.255", {}},  // all ones, but no broadcast spelling
        {"0x1f", "1f", {}},
        {"x0x", "", {}},
        {"256.1.1.1", "256.1.1.1", {}},
        {"", "", {}},
    };
    for (const auto &[text, rewritten, bytes] : rows) {
        std::string out(std::strlen(text) + 1, '#');
        rewriteDottedText(text, out.data());
        EXPECT_STREQ(out.c_str(), rewritten) << text;
        uint32_t address = 0x5A5A5A5A;
        EXPECT_EQ(SMIPAddrASCIIToNetwork(text, &address), bytes.empty() ? SM_STATUS_FAILURE : SM_STATUS_SUCCESS);
        const auto *stored = reinterpret_cast<const unsigned char *>(&address);
        EXPECT_EQ(Bytes(stored, stored + 4), bytes.empty() ? Bytes(4, 0x5A) : bytes) << text;
    }
}

// Text to bytes and back for both families, at capacities round the size.
TEST(NetText, FamiliesBothWaysWithSizes)
{
    const std::tuple<uint32_t, std::string, Bytes> rows[] = {
        {1, "192.0.2.1", {192, 0, 2, 1}},
        {1, "255.255.255.255", {255, 255, 255, 255}},
        {2, "fe80::1", {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {2, "2001:db8::ffff:1:2", {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 1, 0, 2}},
        {2, "::ffff:10.1.2.3", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 10, 1, 2, 3}},
    };
    for (const auto &[family, text, bytes] : rows) {
        const auto length = static_cast<uint32_t>(bytes.size()), needed = static_cast<uint32_t>(text.size() + 1);
        Bytes parsed(20, 0xEE);
        for (uint32_t capacity : {20u, length, length - 1}) {
            uint32_t size = capacity;
            EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, text.c_str(), parsed.data(), &size),
                      capacity < length ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
            EXPECT_EQ(size, length);
        }
        EXPECT_EQ(Bytes(parsed.begin(), parsed.begin() + length), bytes);
        uint32_t network;
        std::memcpy(&network, bytes.data(), 4);
        for (uint32_t capacity : {needed + 5, needed, needed - 1, 0u}) {
            const std::string out = textOut(capacity, [&](char *buffer, uint32_t *size) {
                return SMInetAddrNetworkToUTF8(family, bytes.data(), length, buffer, size);
            });
            EXPECT_EQ(out, capacity >= needed ? text : "BUFFER_TOO_SMALL size " + std::to_string(needed));
            const auto ipv4Only = [&](char *b, uint32_t *s) { return SMIPAddrNetworkToASCII(network, b, s); };
            if (family == 1) {  // the IPv4-only conversion gives the same answers
                EXPECT_EQ(textOut(capacity, ipv4Only), out);
            }
        }
        // The other family's length, and families that do not exist, write nothing.
        for (uint32_t other : {3 - family, 0u, 3u, 0x10001u}) {
            EXPECT_EQ(
                textOut(64, [&](char *b,
                                uint32_t *s) { return SMInetAddrNetworkToUTF8(other, bytes.data(), length, b, s); }),
                "INVALID_PARAMETER size 64");
            uint32_t size = 20;
            EXPECT_EQ(SMInetAddrUTF8ToNetwork(other, text.c_str(), parsed.data(), &size), SM_STATUS_INVALID_PARAMETER);
        }
    }
    uint32_t size = 16;
    unsigned char bytes[16];
    for (const auto &[family, bad] :
         {std::pair{1u, "1.2.3"}, {1u, "::1"}, {1u, ""}, {1u, "1.2.3.4 "}, {1u, "010.1.1.1"}, {2u, "fe80::1::2"}})
        EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, bad, bytes, &size), SM_STATUS_INVALID_PARAMETER) << bad;
}

std::string systemHostName()
{
    char name[HOST_NAME_MAX + 1] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

// The name is cut to the capacity as gethostname cuts it; in UCS-2 it is cut
// to 63 bytes and sized in bytes.
TEST(NetHost, HostNameCutToEveryCapacity)
{
    const std::string name = systemHostName();
    const auto whole = static_cast<uint32_t>(name.size() + 1);
    for (uint32_t capacity : {whole + 10, whole, whole - 1, 2u, 1u})
        EXPECT_EQ(textOut(capacity, SMGetIPHostName), name.substr(0, capacity - 1)) << capacity;
    char byte = '#';
    uint32_t size = 0;
    EXPECT_EQ(SMGetIPHostName(&byte, &size), SM_STATUS_BUFFER_TOO_SMALL) << "no byte for the terminator";
    EXPECT_EQ(std::pair(size, byte), std::pair(whole, '#'));

    const std::string shortName = name.substr(0, 63);
    const auto bytes = static_cast<uint32_t>(2 * (shortName.size() + 1));
    std::vector<ucs2> units(shortName.size() + 2, 0xEEEE), expected(units);
    std::copy(shortName.begin(), shortName.end() + 1, expected.begin());
    for (uint32_t capacity : {bytes - 2, bytes, 0u}) {
        size = capacity;
        EXPECT_EQ(SMUCS2GetIPHostName(capacity == 0 ? nullptr : units.data(), &size),
                  capacity == bytes - 2 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
        EXPECT_EQ(size, capacity == bytes - 2 ? capacity : bytes);
    }
    EXPECT_EQ(units, expected);
}

TEST(NetHost, DnsSuffixOfTheOfficialName)
{
    for (const auto &[official, suffix] :
         {std::pair{"vm", ""}, {"vm.example.org", "example.org"}, {"vm.", ""}, {".lan", "lan"}}) {
        const auto needed = static_cast<uint32_t>(std::strlen(suffix) + 1);
        const auto suffixOf = [official = official](char *buffer, uint32_t *size) {
            return dnsSuffixOf(official, buffer, size);
        };
        EXPECT_EQ(textOut(needed, suffixOf), suffix);
        EXPECT_EQ(textOut(needed - 1, suffixOf), "BUFFER_TOO_SMALL size " + std::to_string(needed));
        uint32_t size = 0;
        EXPECT_EQ(dnsSuffixOf(official, nullptr, &size), SM_STATUS_SUCCESS) << "a null buffer asks for the size";
        EXPECT_EQ(size, needed);
    }
    // The host itself, against the resolver's canonical name.
    addrinfo hints{}, *found = nullptr;
    hints.ai_flags = AI_CANONNAME;
    const std::string suffix = textOut(256, SMGetDNSSuffixNameName);
    if (getaddrinfo(systemHostName().substr(0, 63).c_str(), nullptr, &hints, &found) != 0 ||
        found->ai_canonname == nullptr) {
        EXPECT_EQ(suffix, "FAILURE size 256") << "the host name does not resolve here";
    } else {
        const char *dot = std::strchr(found->ai_canonname, '.');
        EXPECT_EQ(suffix, dot != nullptr ? dot + 1 : "");
    }
    if (found != nullptr)
        freeaddrinfo(found);
}

// What getifaddrs() reports for the interfaces a list keeps: IPv4 of running
// interfaces that are not loopback or point-to-point, IPv6 of interfaces that
// are not loopback or no-ARP.
bool addressesByGetifaddrs(Texts &ipv4, Texts &ipv6)
{
    ifaddrs *all = nullptr;
    if (getifaddrs(&all) != 0)
        return false;
    for (const ifaddrs *at = all; at != nullptr; at = at->ifa_next) {
        const int family = at->ifa_addr != nullptr ? at->ifa_addr->sa_family : AF_UNSPEC;
        char text[INET6_ADDRSTRLEN];
        if (family == AF_INET && (at->ifa_flags & (IFF_LOOPBACK | IFF_POINTOPOINT)) == 0 &&
            (at->ifa_flags & IFF_RUNNING) != 0)
            ipv4.push_back(
                inet_ntop(family, &reinterpret_cast<sockaddr_in *>(at->ifa_addr)->sin_addr, text, sizeof text));
        if (family == AF_INET6 && (at->ifa_flags & (IFF_LOOPBACK | IFF_NOARP)) == 0)
            ipv6.push_back(
                inet_ntop(family, &reinterpret_cast<sockaddr_in6 *>(at->ifa_addr)->sin6_addr, text, sizeof text));
    }
    freeifaddrs(all);
    return true;
}

// Asks with capacity 0 and a null array, with room to spare, then one entry
// short; the texts of the full answer.
template <class List> Texts listWithEveryCapacity(List list)
{
    uint32_t found = 0;
    const int32_t sizing = list(nullptr, &found);
    EXPECT_EQ(sizing, found == 0 ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL);
    SMInetAddrEntry unwritten;
    std::memset(&unwritten, '#', sizeof unwritten);
    std::vector<SMInetAddrEntry> entries(found + 2, unwritten), blank(2, unwritten);
    Texts texts;
    for (uint32_t capacity : {found + 2, found - 1}) {
        if (capacity == UINT32_MAX)
            break;
        uint32_t count = capacity;
        EXPECT_EQ(list(entries.data(), &count), capacity < found ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
        EXPECT_EQ(count, found);
        EXPECT_EQ(std::memcmp(&entries[found], blank.data(), 2 * sizeof unwritten), 0) << "written past the addresses";
        for (uint32_t i = 0; i < found && capacity > found; ++i) {
            EXPECT_TRUE((entries[i].family == 1 || entries[i].family == 2) && entries[i].reserved == 0);
            texts.push_back(entries[i].address);
        }
    }
    return texts;
}

TEST(NetLists, CountContractAgainstGetifaddrs)
{
    Texts ipv4, ipv6;
    if (!addressesByGetifaddrs(ipv4, ipv6))
        GTEST_SKIP() << "getifaddrs() is not served here (netlink not emulated?): no list to compare with";
    const auto inet = [](uint32_t selection) {
        return listWithEveryCapacity(
            [selection](SMInetAddrEntry *e, uint32_t *n) { return SMGetInetAddrStrList(selection, n, e); });
    };
    const Texts byIpv4List =
        listWithEveryCapacity([](SMInetAddrEntry *e, uint32_t *n) { return SMGetIPAddrStrList(e, n, 0); });
    EXPECT_EQ(Bag(byIpv4List.begin(), byIpv4List.end()), Bag(ipv4.begin(), ipv4.end()));
    EXPECT_EQ(inet(1), byIpv4List);
    const Texts onlyIpv6 = inet(2);
    EXPECT_EQ(Bag(onlyIpv6.begin(), onlyIpv6.end()), Bag(ipv6.begin(), ipv6.end()));
    Texts both = byIpv4List;
    both.insert(both.end(), onlyIpv6.begin(), onlyIpv6.end());
    EXPECT_EQ(inet(0), both);
    uint32_t count = 0;
    EXPECT_EQ(SMGetInetAddrStrList(3, &count, nullptr), SM_STATUS_INVALID_PARAMETER);
}

struct FlagsByName final : InterfaceFlags {
    std::map<std::string, uint32_t> table;
    bool flags(const char *name, uint32_t &out) const noexcept override
    {
        return table.count(name) != 0 && (out = table.at(name), true);
    }
};

TEST(NetLists, Ipv6TableOrderAndFilter)
{
    const std::string path =
        test::sandbox().writeFile("net/if_inet6", "fe8000000000000000fc00fffe000001 04 40 20 80     eth0\n"
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
                                                  "fd000000000000000000000000000004 04 40 0x 80 eth0\n"
                                                  "fd000000000000000000000000000005 04 40 00 80 eth1 trailing words\n" +
                                                      std::string(300, 'f') + " 04 40 00 80 eth0\n");
    FlagsByName flags;
    flags.table = {
        {"eth0", IFF_UP | IFF_RUNNING}, {"eth1", IFF_UP}, {"lo", IFF_UP | IFF_LOOPBACK}, {"sit0", IFF_UP | IFF_NOARP}};
    const Texts expected = {"2001:db8::1", "fd00::5", "fec0::5", "fe80::fc:ff:fe00:1", "fe80::2"};
    for (uint32_t capacity : {8u, 5u, 2u, 0u}) {
        std::vector<SMInetAddrEntry> entries(8);
        EntryList list(entries.data(), capacity);
        ASSERT_EQ(appendIpv6(list, path.c_str(), flags), SM_STATUS_SUCCESS);
        EXPECT_EQ(list.count(), expected.size());
        EXPECT_EQ(list.status(), capacity < expected.size() ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
        for (uint32_t i = 0; i < 8; ++i)
            EXPECT_EQ(entries[i].address + std::to_string(entries[i].family),
                      i < std::min<std::size_t>(capacity, 5) ? expected[i] + "2" : "0");
    }
    EntryList none(nullptr, 0);
    EXPECT_EQ(appendIpv6(none, test::sandbox().path("net/absent").c_str(), flags), SM_STATUS_SUCCESS);
    EXPECT_EQ(none.count(), 0u);
}

template <class F, class... Args> int32_t callLoaded(void *library, const char *name, F *, Args... args)
{
    return reinterpret_cast<F *>(dlsym(library, name))(args...);
}

// Every function answers NOT_READY in a process where the network never
// started: the shared library, loaded without a registry file, attaches no
// module. Stopping the module does not take readiness back.
TEST(NetReady, NotReadyBeforeAndStillReadyAfterStop)
{
    const int result = test::runInChild([] {
        setenv("ZKSUPT_REGISTRY", test::sandbox().path("absent/qvreg.cfg").c_str(), 1);
        void *lib = dlopen(ZKSUPT_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (lib == nullptr)
            return 100;
        uint32_t size = 0;
        const int32_t answers[] = {
            callLoaded(lib, "SMGetIPHostName", SMGetIPHostName, nullptr, nullptr),
            callLoaded(lib, "SMUCS2GetIPHostName", SMUCS2GetIPHostName, nullptr, &size),
            callLoaded(lib, "SMGetDNSSuffixNameName", SMGetDNSSuffixNameName, nullptr, &size),
            callLoaded(lib, "SMIPAddrASCIIToNetwork", SMIPAddrASCIIToNetwork, "1.2.3.4", &size),
            callLoaded(lib, "SMIPAddrNetworkToASCII", SMIPAddrNetworkToASCII, 0u, nullptr, &size),
            callLoaded(lib, "SMInetAddrUTF8ToNetwork", SMInetAddrUTF8ToNetwork, 1u, "1.2.3.4", nullptr, &size),
            callLoaded(lib, "SMInetAddrNetworkToUTF8", SMInetAddrNetworkToUTF8, 1u, nullptr, 4u, nullptr, &size),
            callLoaded(lib, "SMGetIPAddrStrList", SMGetIPAddrStrList, nullptr, &size, 0u),
            callLoaded(lib, "SMGetInetAddrStrList", SMGetInetAddrStrList, 0u, &size, nullptr),
        };
        dlclose(lib);
        stopNetwork();
        if (networkStarted() || !networkReady() || SMIPAddrASCIIToNetwork("1.2.3.4", &size) != SM_STATUS_SUCCESS ||
            !startNetwork())
            return 101;
        return static_cast<int>(
            std::count_if(std::begin(answers), std::end(answers), [](int32_t a) { return a != SM_STATUS_NOT_READY; }));
    });
    EXPECT_EQ(result, 0) << "100: dlopen failed, 101: readiness after stop and start, else answers not NOT_READY";
}

TEST(NetReady, MissingPointers)
{
    uint32_t size = 16, address = 0;
    char text[16];
    SMInetAddrEntry entry;
    const int32_t answers[] = {
        SMGetIPHostName(nullptr, &size),
        SMGetIPHostName(text, nullptr),
        SMUCS2GetIPHostName(nullptr, nullptr),
        SMGetDNSSuffixNameName(text, nullptr),
        SMIPAddrASCIIToNetwork(nullptr, &address),
        SMIPAddrASCIIToNetwork("1.2.3.4", nullptr),
        SMIPAddrNetworkToASCII(0, nullptr, &size),
        SMIPAddrNetworkToASCII(0, text, nullptr),
        SMInetAddrUTF8ToNetwork(1, nullptr, text, &size),
        SMInetAddrUTF8ToNetwork(1, "1.2.3.4", nullptr, &size),
        SMInetAddrUTF8ToNetwork(1, "1.2.3.4", text, nullptr),
        SMInetAddrNetworkToUTF8(1, nullptr, 4, text, &size),
        SMInetAddrNetworkToUTF8(1, text, 4, nullptr, &size),
        SMInetAddrNetworkToUTF8(1, text, 4, text, nullptr),
        SMGetIPAddrStrList(&entry, nullptr, 0),
        SMGetIPAddrStrList(nullptr, &size, 0),
        SMGetInetAddrStrList(0, nullptr, &entry),
        SMGetInetAddrStrList(0, &size, nullptr),
    };
    for (std::size_t i = 0; i < std::size(answers); ++i)
        EXPECT_EQ(answers[i], SM_STATUS_BAD_ARGUMENT) << "call " << i;
}

// Calls from several threads at once give what one thread alone gets.
TEST(NetThreads, ConcurrentCallsAgree)
{
    const auto snapshot = [] {
        uint32_t address = 0, count = 16;
        SMInetAddrEntry entries[16];
        std::string all = textOut(256, SMGetDNSSuffixNameName) +
                          std::to_string(SMIPAddrASCIIToNetwork("010.1.2.3", &address) + address);
        all += std::to_string(SMGetInetAddrStrList(0, &count, entries));
        return std::accumulate(entries, entries + std::min(count, 16u), all,
                               [](std::string a, const SMInetAddrEntry &e) { return a + e.address; });
    };
    const std::string alone = snapshot();
    std::atomic<int> differing{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                differing += snapshot() != alone;
        });
    std::for_each(threads.begin(), threads.end(), [](std::thread &t) { t.join(); });
    EXPECT_EQ(differing, 0);
}

}  // namespace
}  // namespace zksupt::net
