// Exported entries of the XML writer.
#include <zksupt/xml.h>

#include "xml/writer.h"

namespace xml = zksupt::xml;

// clang-format off
extern "C" {

SMXGBuf *SMXGBufAlloc(uint32_t capacity, int32_t declaration) noexcept { return xml::allocBuffer(capacity, declaration); }
char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t capacity, int32_t declaration) noexcept { return xml::reallocContent(buffer, capacity, declaration); }
SMXGBuf *SMXGBufFree(SMXGBuf *buffer) noexcept { return xml::freeBuffer(buffer); }
char *SMXGBufFreeGetContent(SMXGBuf *buffer) noexcept { return xml::freeKeepContent(buffer); }
void SMXGBufFreeContent(char *content) noexcept { xml::freeContent(content); }
int32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept { return xml::beginNode(buffer, name, attributes); }
int32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept { return xml::emptyNode(buffer, name, attributes); }
int32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name) noexcept { return xml::endNode(buffer, name); }
int32_t SMXGBufCatAttribute(SMXGBuf *buffer, const char *name, const void *value, uint32_t size, uint32_t type, const SMXGValueOptions *options) noexcept { return xml::attribute(buffer, name, value, size, type, options); }
int32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t size, uint32_t type, const SMXGValueOptions *options) noexcept { return xml::nodeValue(buffer, value, size, type, options); }
int32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value, uint32_t size, uint32_t type, const SMXGValueOptions *options) noexcept { return xml::node(buffer, name, attributes, value, size, type, options); }
char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *size, uint32_t count) noexcept { return xml::escapeText(text, size, count); }

}  // extern "C"
// clang-format on
