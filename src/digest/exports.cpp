// Exported entries of the checksums and encodings.
#include <zksupt/digest.h>

#include "digest/base64.h"
#include "digest/crc32.h"
#include "digest/md5.h"

namespace dg = zksupt::digest;

// clang-format off
extern "C" {

uint32_t SMCRC32Compute_vn(const void *buf, uint32_t len) noexcept { return dg::crc32OfBuffer(buf, len); }
uint32_t SMCRC32Compute_str(const char *s) noexcept { return dg::crc32OfString(s); }
uint32_t SMCRC32Compute_strncase(const char *s) noexcept { return dg::crc32OfStringNoCase(s); }
uint32_t SMGenerateCRC32(const uint8_t *buf, uint32_t len, uint32_t total) noexcept { return dg::generateCrc32(buf, len, total); }

int32_t SMBase64Encode(char *dst, const uint8_t *src, uint32_t len, const char *alphabet) noexcept { dg::base64Encode(dst, src, len, alphabet); return 0; }
int32_t SMBase64Decode(uint8_t *dst, const char *src, uint32_t len) noexcept { dg::base64Decode(dst, src, len); return 0; }

void SMRFC1321Load(SMRFC1321Context *context) noexcept { dg::md5Load(context); }
void SMRFC1321AddMsg(SMRFC1321Context *context, const void *data, uint32_t len) noexcept { dg::md5Add(context, data, len); }
void SMRFC1321ComputeMsgDigest(SMRFC1321Context *context) noexcept { dg::md5Finish(context); }
void SMRFC1321UnLoad(SMRFC1321Context *context) noexcept { dg::md5Unload(context); }

}  // extern "C"
// clang-format on
