// The MD5 message digest over the caller's context record. Words, the bit
// count and the digest are in host byte order, so a big-endian host yields its
// own digests; the final padding takes a second block from 55 message bytes
// on (RFC 1321 from 56). Stored digests depend on both.
#pragma once

#include <cstdint>

#include <zksupt/digest.h>

namespace zksupt::digest {

void md5Load(SMRFC1321Context *context) noexcept;
void md5Add(SMRFC1321Context *context, const void *data, uint32_t length) noexcept;
void md5Finish(SMRFC1321Context *context) noexcept;
void md5Unload(SMRFC1321Context *context) noexcept;

}  // namespace zksupt::digest
