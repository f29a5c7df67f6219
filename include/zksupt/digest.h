/**
 * @file
 * Checksums and encodings: CRC-32, Base64 and the MD5 message digest.
 *
 * The functions keep no state between calls (an MD5 digest lives in the caller's context): any thread may call
 * them, one thread at a time per context.
 */
#ifndef ZKSUPT_DIGEST_H
#define ZKSUPT_DIGEST_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/**
 * The MD5 context: 108 bytes that the caller allocates and the SMRFC1321 functions fill. Every multi-byte quantity
 * is in host byte order.
 */
typedef struct SMRFC1321Context {
    /** Message bits added so far: one unsigned 64-bit number in host byte order (kept as bytes so that the record has
     * no padding; copy it out with memcpy). */
    uint8_t bitCount[8];
    /** The chaining values A, B, C and D. */
    uint32_t state[4];
    /** Bytes waiting in block, 0 to 63. */
    uint32_t buffered;
    /** The result: A, B, C and D after the last block, each a host-order 32-bit word. */
    uint8_t digest[16];
    /** The bytes of an incomplete block. */
    uint8_t block[64];
} SMRFC1321Context;

/** Standard CRC-32 (as zlib's crc32) of len bytes of buf. */
ZKSUPT_API uint32_t SMCRC32Compute_vn(const void *buf, uint32_t len) ZKSUPT_NOEXCEPT;
/** Standard CRC-32 of the bytes of s before its terminator. */
ZKSUPT_API uint32_t SMCRC32Compute_str(const char *s) ZKSUPT_NOEXCEPT;
/** CRC-32 of s with each byte first mapped through tolower of the calling thread's locale. */
ZKSUPT_API uint32_t SMCRC32Compute_strncase(const char *s) ZKSUPT_NOEXCEPT;
/**
 * The library's own bitwise checksum of total bytes: buf's len bytes, then zeros; 0xFFFFFFFF for total 0.
 * @warning This is not CRC-32 and does not match it for almost any input; use SMCRC32Compute_vn() for CRC-32.
 */
ZKSUPT_API uint32_t SMGenerateCRC32(const uint8_t *buf, uint32_t len, uint32_t total) ZKSUPT_NOEXCEPT;

/**
 * Writes the Base64 text of len bytes and a terminator into dst, which must hold 4 * ceil(len / 3) + 1 bytes; no
 * line breaks. Sizes and pointers are not checked.
 * @param alphabet 64 characters; null selects the standard one.
 * @return always #SM_STATUS_SUCCESS.
 * @warning When len is not a multiple of 3, the byte after the input is read, and its high bits go into the last
 * character before the padding: the input must be followed by a readable byte, and the text is standard Base64 only
 * when that byte is 0 (as after a string or in a zero-filled buffer).
 */
ZKSUPT_API int32_t SMBase64Encode(char *dst, const uint8_t *src, uint32_t len, const char *alphabet) ZKSUPT_NOEXCEPT;
/**
 * Decodes len / 4 groups of standard Base64 text into dst (3 * (len / 4) + 1 bytes), then a 0 byte; a remainder of
 * 1-3 characters is ignored. Sizes and pointers are not checked.
 * @return always #SM_STATUS_SUCCESS.
 */
ZKSUPT_API int32_t SMBase64Decode(uint8_t *dst, const char *src, uint32_t len) ZKSUPT_NOEXCEPT;

/** Starts a digest: count, states, buffered and digest reset; the block bytes are left alone. */
ZKSUPT_API void SMRFC1321Load(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;
/** Adds len bytes of data to the digest. */
ZKSUPT_API void SMRFC1321AddMsg(SMRFC1321Context *context, const void *data, uint32_t len) ZKSUPT_NOEXCEPT;
/**
 * Pads the message, processes the last block(s) and stores the digest in the context's digest field.
 * @warning The message words, the bit count and the four digest words are all in host byte order: on a
 * little-endian host the digest bytes are MD5's, on a big-endian host a different, host-specific digest. And the
 * padding takes an extra block once more than 55 bytes are buffered (RFC 1321: 56), so a message whose length is 55
 * modulo 64 gets a digest unlike standard MD5 on every host.
 */
ZKSUPT_API void SMRFC1321ComputeMsgDigest(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;
/** Sets all 108 bytes of the context to 0. */
ZKSUPT_API void SMRFC1321UnLoad(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_DIGEST_H */
