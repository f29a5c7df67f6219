/**
 * @file
 * XML writer: a document built as UTF-8 text in one growing buffer, by appending tags, attributes and typed values in
 * document order. No tree and no nesting checks: the caller closes elements by name.
 *
 * A buffer and its content are allocated by the writer: free the buffer with SMXGBufFree(), or take its content with
 * SMXGBufFreeGetContent() and free that with SMXGBufFreeContent(). When growing the content fails, it keeps its old
 * text. Nothing locks: one thread at a time uses a buffer. Typed values are written as SMXLTTypeValueToUTF8() gives
 * them.
 */
#ifndef ZKSUPT_XML_H
#define ZKSUPT_XML_H

#include <zksupt/text.h>

ZKSUPT_BEGIN_DECLS

/** An XML buffer is a sized UTF-8 string {content, capacity, length}; its content is always terminated. */
typedef SMSizedString SMXGBuf;

/** Value options: format flags OR-ed into the type, and how many times string values are escaped. */
typedef struct SMXGValueOptions {
    uint16_t formatFlags; /**< format flags OR-ed into the type (see xlt.h) */
    uint8_t escapeCount;  /**< how many times a string value is escaped */
} SMXGValueOptions;

/** A new buffer of at least 64 bytes, with the XML declaration when declaration is 1; null without memory. */
ZKSUPT_API SMXGBuf *SMXGBufAlloc(uint32_t capacity, int32_t declaration) ZKSUPT_NOEXCEPT;
/** Frees the content and starts an empty one of exactly capacity bytes; returns it, or null. */
ZKSUPT_API char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t capacity, int32_t declaration) ZKSUPT_NOEXCEPT;
/** Frees content and record; returns null. */
ZKSUPT_API SMXGBuf *SMXGBufFree(SMXGBuf *buffer) ZKSUPT_NOEXCEPT;
/** Frees the record and hands over the content, to be freed with SMXGBufFreeContent(). */
ZKSUPT_API char *SMXGBufFreeGetContent(SMXGBuf *buffer) ZKSUPT_NOEXCEPT;
/** Frees content handed out by this writer; null is ignored. */
ZKSUPT_API void SMXGBufFreeContent(char *content) ZKSUPT_NOEXCEPT;
/**
 * Appends `<name`, a blank and the attribute buffer's text when it has any, and `>`: #SM_STATUS_SUCCESS, or
 * #SM_STATUS_INVALID_PARAMETER for a null buffer or name.
 */
ZKSUPT_API int32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) ZKSUPT_NOEXCEPT;
/** As SMXGBufCatBeginNode(), closing with ` />`. */
ZKSUPT_API int32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) ZKSUPT_NOEXCEPT;
/** Appends `</name>`: #SM_STATUS_SUCCESS, or #SM_STATUS_INVALID_PARAMETER for a null buffer or name. */
ZKSUPT_API int32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name) ZKSUPT_NOEXCEPT;
/** Appends `name="text of the value"`, led by a blank unless the buffer is empty; the status as for
 * SMXGBufCatNodeValue(). */
ZKSUPT_API int32_t SMXGBufCatAttribute(SMXGBuf *buffer, const char *name, const void *value, uint32_t size,
                                       uint32_t type, const SMXGValueOptions *options) ZKSUPT_NOEXCEPT;
/**
 * Appends the text of a typed value, escaped options->escapeCount times for a string.
 * @param options may be null: no flags, no escaping.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_NOT_FOUND for no value, #SM_STATUS_INVALID_PARAMETER, #SM_STATUS_NO_MEMORY,
 * #SM_STATUS_FAILURE, or the translation's status.
 */
ZKSUPT_API int32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t size, uint32_t type,
                                       const SMXGValueOptions *options) ZKSUPT_NOEXCEPT;
/** Begin tag, value and end tag; a failed value (other than no value) leaves the element open and returns its status.
 */
ZKSUPT_API int32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value,
                                  uint32_t size, uint32_t type, const SMXGValueOptions *options) ZKSUPT_NOEXCEPT;
/**
 * A new copy of text with the XML special characters escaped count times (at most 16); free it with
 * SMXGBufFreeContent().
 * @param size in: a capacity hint; out: the copy's length.
 * @return the copy; null for a null text or size, count 0, or no memory.
 */
ZKSUPT_API char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *size, uint32_t count) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_XML_H */
