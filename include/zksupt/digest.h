/* Checksums and encodings: CRC-32, Base64 and the MD5 message digest. */
#ifndef ZKSUPT_DIGEST_H
#define ZKSUPT_DIGEST_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/*
 * The MD5 context: 108 bytes that the caller allocates and the SMRFC1321
 * functions fill. Every multi-byte quantity is in host byte order.
 */
typedef struct SMRFC1321Context {
    /* Message bits added so far: one unsigned 64-bit number in host byte order
       (kept as bytes so that the record has no padding; copy it out with memcpy). */
    uint8_t bitCount[8];
    /* The chaining values A, B, C and D. */
    uint32_t state[4];
    /* Bytes waiting in block, 0 to 63. */
    uint32_t buffered;
    /* The result: A, B, C and D after the last block, each a host-order 32-bit word. */
    uint8_t digest[16];
    /* The bytes of an incomplete block. */
    uint8_t block[64];
} SMRFC1321Context;

/* Standard CRC-32 (as zlib's crc32) of len bytes of buf. */
ZKSUPT_API uint32_t SMCRC32Compute_vn(const void *buf, uint32_t len) ZKSUPT_NOEXCEPT;
/* Standard CRC-32 of the bytes of s before its terminator. */
ZKSUPT_API uint32_t SMCRC32Compute_str(const char *s) ZKSUPT_NOEXCEPT;
/* CRC-32 of s with each byte first mapped through tolower of the calling thread's locale. */
ZKSUPT_API uint32_t SMCRC32Compute_strncase(const char *s) ZKSUPT_NOEXCEPT;
/* The library's own bitwise checksum (not CRC-32) of total bytes: buf's len bytes, then zeros. */
ZKSUPT_API uint32_t SMGenerateCRC32(const uint8_t *buf, uint32_t len, uint32_t total) ZKSUPT_NOEXCEPT;

/* Base64 text of len bytes into dst (4 * ceil(len / 3) + 1 bytes); reads one byte past an
   incomplete last group. A null alphabet selects the standard one. Returns 0. */
ZKSUPT_API int32_t SMBase64Encode(char *dst, const uint8_t *src, uint32_t len, const char *alphabet) ZKSUPT_NOEXCEPT;
/* Decodes len / 4 groups of Base64 text into dst (3 * (len / 4) + 1 bytes), then a 0 byte. Returns 0. */
ZKSUPT_API int32_t SMBase64Decode(uint8_t *dst, const char *src, uint32_t len) ZKSUPT_NOEXCEPT;

/* Starts a digest: count, states, buffered and digest reset; the block bytes are left alone. */
ZKSUPT_API void SMRFC1321Load(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;
/* Adds len bytes of data to the digest. */
ZKSUPT_API void SMRFC1321AddMsg(SMRFC1321Context *context, const void *data, uint32_t len) ZKSUPT_NOEXCEPT;
/* Pads the message, processes the last block(s) and stores the digest in the context. */
ZKSUPT_API void SMRFC1321ComputeMsgDigest(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;
/* Sets all 108 bytes of the context to 0. */
ZKSUPT_API void SMRFC1321UnLoad(SMRFC1321Context *context) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_DIGEST_H */
