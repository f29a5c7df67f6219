/*
 * A small suite service on top of libzksupt. The library attaches itself when
 * the program loads it and finds its installation through the product
 * registry file (here the sandbox that ZKSUPT_REGISTRY names).
 *
 * The service describes its state as an SDO property set (its name in UCS-2,
 * its process ID and a nested object of counters), flattens it into the
 * binary form the suite's components exchange, fingerprints it with CRC-32
 * and MD5, and publishes it in its data directory (argument 1) as a text
 * report written under a temporary name and copied into place. It then reads
 * the binary back and checks that it describes the same state.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <zksupt/zksupt.h>

enum { ID_NAME = 1, ID_PID = 2, ID_COUNTERS = 3, ID_REQUESTS = 10, ID_ERRORS = 11 };
enum { TYPE_INT32 = 3, TYPE_UINT32 = 7, TYPE_UCS2 = 14, TYPE_OBJECT = 13 };

static SDOConfig *describe(const char *name, uint32_t requests, uint32_t errors)
{
    SDOConfig *state = SMSDOConfigAlloc();
    SDOConfig *counters = SMSDOConfigAlloc();
    ucs2 wide[64];
    uint32_t size = sizeof wide;
    int32_t pid = (int32_t)getpid();

    if (state == NULL || counters == NULL || SMUTF8StrToUCS2Str(wide, &size, name) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(state, ID_NAME, TYPE_UCS2, wide, size, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(state, ID_PID, TYPE_INT32, &pid, sizeof pid, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(counters, ID_REQUESTS, TYPE_UINT32, &requests, sizeof requests, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(counters, ID_ERRORS, TYPE_UINT32, &errors, sizeof errors, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(counters);
        SMSDOConfigFree(state);
        return NULL;
    }
    /* The value of a nested object is its handle; the state owns it from here on. */
    if (SMSDOConfigAddData(state, ID_COUNTERS, TYPE_OBJECT, counters, sizeof counters, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(counters);
        SMSDOConfigFree(state);
        return NULL;
    }
    return state;
}

static int publish(const char *directory, const char *report)
{
    char name[16], temporary[512], final[512];
    uint32_t size = sizeof name;
    FILE *file;
    int ok;

    if (SMGetTmpFile(directory, name, &size) != SM_STATUS_SUCCESS)
        return 0;
    SMsnprintf(temporary, sizeof temporary, "%s/%s", directory, name);
    SMsnprintf(final, sizeof final, "%s/service-state.txt", directory);
    file = fopen(temporary, "w");
    if (file == NULL)
        return 0;
    ok = fputs(report, file) >= 0;
    ok = fclose(file) == 0 && ok;
    ok = ok && SMFileCopyAndSync(temporary, final, 1) == SM_STATUS_SUCCESS;
    SMDeleteFile(temporary);
    if (ok && SMGetSizeOfFile(final, &size) == SM_STATUS_SUCCESS)
        printf("published %s (%u bytes)\n", final, (unsigned)size);
    return ok;
}

int main(int argc, char **argv)
{
    const char *directory = argc > 1 ? argv[1] : ".";
    SDOConfig *state, *copy;
    uint8_t *binary;
    uint32_t size;
    SMRFC1321Context md5;
    char *base64, report[4096], digest[33];
    int length, i, status = 1;

    if (SUPTGetMajorVersion() != 1) {
        fprintf(stderr, "service: built for interface 1, found %u\n", (unsigned)SUPTGetMajorVersion());
        return 1;
    }
    printf("libzksupt interface %u.%u revision %u\n", (unsigned)SUPTGetMajorVersion(), (unsigned)SUPTGetMinorVersion(),
           (unsigned)SUPTGetRevision());

    state = describe("Node Steward sample service \xE2\x98\xBA", 1500, 3);
    if (state == NULL) {
        fprintf(stderr, "service: cannot describe the state\n");
        return 1;
    }
    size = SMSDOConfigGetBinarySize(state);
    binary = (uint8_t *)SMAllocMem(size);
    base64 = (char *)SMAllocMem(4 * ((size + 2) / 3) + 1);
    if (binary == NULL || base64 == NULL || SMSDOConfigToBinary(state, binary, &size) != SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: cannot flatten the state\n");
        goto done;
    }

    SMRFC1321Load(&md5);
    SMRFC1321AddMsg(&md5, binary, size);
    SMRFC1321ComputeMsgDigest(&md5);
    for (i = 0; i < 16; ++i)
        SMsnprintf(digest + 2 * i, 3, "%02x", md5.digest[i]);
    SMRFC1321UnLoad(&md5);
    /* The encoder reads one byte past an incomplete last group; the state is
     * short enough that a zero-padded copy costs nothing. */
    {
        uint8_t padded[1024] = {0};
        if (size >= sizeof padded)
            goto done;
        memcpy(padded, binary, size);
        SMBase64Encode(base64, padded, size, NULL);
    }

    length = SMsnprintf(report, sizeof report, "state: %u entries, %u bytes\ncrc32: %08X\nmd5: %s\nbinary: %s\n",
                        (unsigned)SMSDOConfigGetCount(state), (unsigned)size, SMCRC32Compute_vn(binary, size), digest,
                        base64);
    fputs(report, stdout);
    if (length <= 0 || !publish(directory, report)) {
        fprintf(stderr, "service: cannot publish the state in %s\n", directory);
        goto done;
    }

    copy = SMSDOBinaryToConfig(binary);
    status = copy != NULL && SMSDOConfigCompareByValue(state, copy) == 1 ? 0 : 1;
    printf("state read back: %s\n", status == 0 ? "same" : "different");
    SMSDOConfigFree(copy);

done:
    SMFreeMem(base64);
    SMFreeMem(binary);
    SMSDOConfigFree(state);
    return SMOSShutdown() == SM_STATUS_SUCCESS ? status : 1;
}
