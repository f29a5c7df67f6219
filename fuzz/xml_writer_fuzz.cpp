// Hostile values through the XML writer: as attribute values and element
// text, escaped once or more, the document stays well-formed (checked here
// by a small checker of markup: tags, attribute quoting, entity references),
// and text escaped once reads back as the value.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <zksupt/xml.h>

#include "file_installation.h"

namespace {

using zksupt::fuzz::check;

constexpr uint32_t kUtf8 = 13;

// Whether text between markup holds no markup of its own and only whole
// entity references; in an attribute no double quote either.
bool isCharacterData(std::string_view text, bool inAttribute)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '<' || (inAttribute && c == '"'))
            return false;
        if (c != '&')
            continue;
        const std::size_t end = text.find(';', at);
        if (end == std::string_view::npos)
            return false;
        const std::string_view name = text.substr(at + 1, end - at - 1);
        const bool known = name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos";
        const bool numeric =
            name.size() >= 2 && name[0] == '#' && name.find_first_not_of("0123456789", 1) == std::string_view::npos;
        if (!known && !numeric)
            return false;
        at = end;
    }
    return true;
}

std::string unescaped(std::string_view text)
{
    static const std::pair<std::string_view, char> entities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        bool replaced = false;
        for (const auto &[entity, c] : entities)
            if (text.substr(at, entity.size()) == entity) {
                plain += c;
                at += entity.size();
                replaced = true;
                break;
            }
        if (!replaced)
            plain += text[at++];
    }
    return plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2 || size > 4096)
        return 0;
    const uint8_t escapes = static_cast<uint8_t>(1 + data[0] % 3);
    const std::string input(reinterpret_cast<const char *>(data + 1), size - 1);
    const std::size_t split = input.find('\0');
    const std::string attribute = input.substr(0, split);
    const std::string text = split == std::string::npos ? std::string() : input.substr(split + 1);
    const std::string value = text.substr(0, text.find('\0'));

    SMXGBuf *document = SMXGBufAlloc(64, 1);
    check(document != nullptr);
    SMXGBuf *attributes = SMXGBufAlloc(64, 0);
    check(attributes != nullptr);
    const SMXGValueOptions options{0, escapes};
    const bool attributeWritten =
        SMXGBufCatAttribute(attributes, "a", attribute.c_str(), static_cast<uint32_t>(attribute.size() + 1), kUtf8,
                            &options) == 0;
    check(SMXGBufCatBeginNode(document, "Root", attributeWritten ? attributes : nullptr) == 0);
    const bool valueWritten = SMXGBufCatNode(document, "v", nullptr, value.c_str(),
                                             static_cast<uint32_t>(value.size() + 1), kUtf8, &options) == 0;
    if (valueWritten)
        check(SMXGBufCatEndNode(document, "Root") == 0);

    const std::string_view written(static_cast<const char *>(document->buf), document->length);
    check(std::strlen(static_cast<const char *>(document->buf)) == document->length);
    if (valueWritten) {
        const std::size_t open = written.find("<Root");
        check(open != std::string_view::npos);
        std::string_view rest = written.substr(open + 5);
        if (attributeWritten) {
            check(rest.starts_with(" a=\""));
            const std::size_t close = rest.find('"', 4);
            check(close != std::string_view::npos && isCharacterData(rest.substr(4, close - 4), true));
            if (escapes == 1)
                check(unescaped(rest.substr(4, close - 4)) == attribute);
            rest = rest.substr(close + 1);
        }
        check(rest.starts_with("><v>") && rest.ends_with("</v></Root>"));
        const std::string_view body = rest.substr(4, rest.size() - 4 - 11);
        check(isCharacterData(body, false));
        if (escapes == 1)
            check(unescaped(body) == value);
    }
    SMXGBufFree(attributes);
    SMXGBufFree(document);
    return 0;
}
