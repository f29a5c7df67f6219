#include "log/xml_entry.h"

#include <ctime>
#include <string_view>

#include <zksupt/status.h>

#include "net/host_name.h"
#include "sdo/type_text.h"
#include "xml/writer.h"

namespace zksupt::log {
namespace {

constexpr uint32_t kEntryCapacity = 2048;
constexpr uint32_t kComputerSize = 256;

struct Child {
    const char *name;
    const void *value;  // null: an empty element
    uint32_t size;
    uint32_t type;
    const SMXGValueOptions *options;
};

}  // namespace

void FreeXmlBuffer::operator()(SMXGBuf *buffer) const noexcept
{
    xml::freeBuffer(buffer);
}

int32_t buildEntry(const Event &event, XmlBuffer &entry) noexcept
{
    entry.reset(xml::allocBuffer(kEntryCapacity, 0));
    if (entry == nullptr)
        return SM_STATUS_NO_MEMORY;
    const std::string_view category = categoryName(event.category);
    if (category.empty())
        return SM_STATUS_FAILURE;
    const time_t now = std::time(nullptr);
    const int64_t timeStamp = now;
    const auto dateTime = static_cast<int32_t>(now);
    char computer[kComputerSize];
    uint32_t computerSize = sizeof computer;
    if (net::hostName(computer, &computerSize) != SM_STATUS_SUCCESS)
        computer[0] = '\0';
    const auto type = static_cast<uint16_t>(event.type);
    const auto id = static_cast<uint32_t>(event.eventId);
    const SMXGValueOptions escapedOnce{0, 1};
    const SMXGValueOptions byteList{static_cast<uint16_t>(sdo::kFlagHex), 0};
    const void *data = event.dataLength != 0 ? event.data : nullptr;
    const Child children[] = {
        {"TimeStamp", &timeStamp, sizeof timeStamp, sdo::kTypeInt64, nullptr},
        {"DateTime", &dateTime, sizeof dateTime, sdo::kTypeTime, nullptr},
        {"ComputerName", computer, 0, sdo::kTypeUtf8, nullptr},
        {"Type", &type, sizeof type, sdo::kTypeUint16, nullptr},
        {"ID", &id, sizeof id, sdo::kTypeUint32, nullptr},
        {"Link", event.link, 0, sdo::kTypeUtf8, &escapedOnce},
        {"UserInfo", event.userInfo, 0, sdo::kTypeUtf8, nullptr},
        {"Source", event.source, 0, sdo::kTypeUtf8, nullptr},
        {"Category", category.data(), 0, sdo::kTypeUtf8, nullptr},
        {"Description", event.description, 0, sdo::kTypeUtf8, nullptr},
        {"Data", data, event.dataLength, sdo::kTypeBytes, &byteList},
    };
    if (const int32_t status = xml::beginNode(entry.get(), "LogEntry", nullptr); status != SM_STATUS_SUCCESS)
        return status;
    for (const Child &child : children)
        if (const int32_t status =
                xml::node(entry.get(), child.name, nullptr, child.value, child.size, child.type, child.options);
            status != SM_STATUS_SUCCESS)
            return status;
    return xml::endNode(entry.get(), "LogEntry");
}

}  // namespace zksupt::log
