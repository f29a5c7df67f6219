/* A program that uses the installed library the way a client does: through
   <zksupt/zksupt.h> and the exported functions only. It checks what it gets
   and exits non-zero on the first surprise. */
#include <stdio.h>
#include <string.h>

#include <zksupt/zksupt.h>

#if !ZKSUPT_VERSION_CHECK(9, 0, 0) || ZKSUPT_VERSION_CHECK(10, 0, 0)
#error "the installed headers are not of major version 9"
#endif

static int failures;

static void expect(int ok, const char *what)
{
    if (!ok) {
        fprintf(stderr, "consumer: %s\n", what);
        ++failures;
    }
}

int main(void)
{
    char text[64];
    char encoded[16];
    uint8_t decoded[16];
    char *copy;

    expect(SUPTGetMajorVersion() == 1 && SUPTGetMinorVersion() == 1, "interface level is not 1.1");

    expect(SMsnprintf(text, sizeof text, "%s-%d", "zksupt", 9) == 8 && strcmp(text, "zksupt-9") == 0,
           "SMsnprintf did not format");

    /* "abc" is the classic CRC-32 check value. */
    expect(SMCRC32Compute_str("abc") == 0x352441c2u, "CRC-32 of \"abc\" is wrong");

    memset(encoded, 0, sizeof encoded);
    expect(SMBase64Encode(encoded, (const uint8_t *)"zks", 3, NULL) >= 0 && strcmp(encoded, "emtz") == 0,
           "Base64 encoding of \"zks\" is wrong");
    expect(SMBase64Decode(decoded, encoded, 4) >= 0 && memcmp(decoded, "zks", 3) == 0,
           "Base64 does not decode its own encoding");

    /* The version string must spell the version numbers. */
    SMsnprintf(text, sizeof text, "%d.%d.%d", ZKSUPT_VERSION_MAJOR, ZKSUPT_VERSION_MINOR, ZKSUPT_VERSION_PATCH);
    copy = SMAllocMem((uint32_t)strlen(text) + 1);
    expect(copy != NULL, "SMAllocMem failed");
    if (copy != NULL) {
        strcpy(copy, text);
        expect(strcmp(copy, ZKSUPT_VERSION_STRING) == 0, "ZKSUPT_VERSION_STRING disagrees with the version numbers");
        SMFreeMem(copy);
    }

    if (failures == 0)
        printf("consumer: libzksupt %s works\n", ZKSUPT_VERSION_STRING);
    return failures == 0 ? 0 : 1;
}
