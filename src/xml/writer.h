// The XML buffer writer: tags, attributes and typed values appended to one
// sized UTF-8 string by its append rule.
#pragma once

#include <cstdint>

#include <zksupt/xml.h>

namespace zksupt::xml {

SMXGBuf *allocBuffer(uint32_t capacity, int32_t declaration) noexcept;
char *reallocContent(SMXGBuf *buffer, uint32_t capacity, int32_t declaration) noexcept;
SMXGBuf *freeBuffer(SMXGBuf *buffer) noexcept;
char *freeKeepContent(SMXGBuf *buffer) noexcept;
void freeContent(char *content) noexcept;

int32_t beginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept;
int32_t emptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept;
int32_t endNode(SMXGBuf *buffer, const char *name) noexcept;
int32_t attribute(SMXGBuf *buffer, const char *name, const void *value, uint32_t size, uint32_t type,
                  const SMXGValueOptions *options) noexcept;
int32_t nodeValue(SMXGBuf *buffer, const void *value, uint32_t size, uint32_t type,
                  const SMXGValueOptions *options) noexcept;
int32_t node(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value, uint32_t size,
             uint32_t type, const SMXGValueOptions *options) noexcept;

// SMXGEscapeXMLUTF8Str.
char *escapeText(const char *text, uint32_t *size, uint32_t count) noexcept;

}  // namespace zksupt::xml
