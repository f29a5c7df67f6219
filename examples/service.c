/*
 * A small suite service on top of libzksupt, doing what a service of the
 * suite does when it runs. The library attaches itself when the program
 * loads it and finds its installation through the product registry file
 * (here the sandbox that ZKSUPT_REGISTRY names).
 *
 * The service takes its named mutex, so that only one instance works at a
 * time; reads its settings from its INI file and counts its run there;
 * records its start in the text and XML event logs; describes its state as
 * an SDO property set (its name in UCS-2, its run, a nested object of
 * counters) and publishes the SDO's binary form in its var-data directory,
 * written under a temporary name and copied into place; reads the published
 * bytes back; and records its report, with the binary as the event's data.
 */
#include <stdio.h>
#include <string.h>

#include <zksupt/zksupt.h>

/* A status's name for messages ("KEY_NOT_FOUND"). */
static const char *statusName(int32_t status)
{
    const char *name = zksupt_status_name(status);
    return name != NULL ? name : "unknown status";
}

static const char kSource[] = "zksupt_service";
static const char kSettings[] = "service.ini";
enum { ID_NAME = 1, ID_RUN = 2, ID_COUNTERS = 3, ID_REQUESTS = 10, ID_ERRORS = 11 };
enum { EVENT_STARTED = 1000, EVENT_REPORT = 1001 };

static SDOConfig *describe(const char *name, uint32_t run, uint32_t requests, uint32_t errors)
{
    SDOConfig *state = SMSDOConfigAlloc();
    SDOConfig *counters = SMSDOConfigAlloc();
    ucs2 wide[64];
    uint32_t size = sizeof wide;

    /* Text goes into an SDO as UCS-2: inside an SDO type 13 is a nested object, not a UTF-8 string. */
    if (state == NULL || counters == NULL || SMUTF8StrToUCS2Str(wide, &size, name) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(state, ID_NAME, SM_TYPE_UCS2, wide, size, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(state, ID_RUN, SM_TYPE_UINT32, &run, sizeof run, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(counters, ID_REQUESTS, SM_TYPE_UINT32, &requests, sizeof requests, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(counters, ID_ERRORS, SM_TYPE_UINT32, &errors, sizeof errors, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(counters);
        SMSDOConfigFree(state);
        return NULL;
    }
    /* The value of a nested object is its handle; the state owns it from here on. */
    if (SMSDOConfigAddData(state, ID_COUNTERS, SM_SDO_TYPE_OBJECT, counters, sizeof counters, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(counters);
        SMSDOConfigFree(state);
        return NULL;
    }
    return state;
}

/* Settings: the display name (a default when the file has none) and the run counter, counted up. The file is
 * where the plain INI calls look for a bare file name: <ini path of Meridian>/ini/. */
static int readSettings(char *name, uint32_t nameSize, uint32_t *run)
{
    static const char defaultName[] = "Node Steward sample service";
    char directory[256], settings[512];
    uint32_t size = sizeof directory, zero = 0;
    char *text;
    int32_t status;

    if (SMGetPathByProductIDandType(SM_PRODUCT_MERIDIAN, SM_PATH_KIND_INI, directory, &size) != SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: the registry names no ini directory\n");
        return 0;
    }
    SMsnprintf(settings, sizeof settings, "%s/ini/%s", directory, kSettings);
    text = SMReadINISectionKeyUTF8Value("Service", "name", defaultName, NULL, settings, SM_LOCK_WAIT);
    SMsnprintf(name, nameSize, "%s", text != NULL ? text : defaultName);
    SMFreeMem(text);
    /* A missing key copies the default and still says so: only a missing file, section or key means "first run". */
    size = sizeof *run;
    status = SMReadINIPathFileValue("Service", "runs", SM_INI_TYPE_UINT32, run, &size, &zero, sizeof zero, settings,
                                    SM_LOCK_WAIT);
    if (status != SM_STATUS_SUCCESS && status != SM_STATUS_FILE_OPEN_FAILED && status != SM_STATUS_SECTION_NOT_FOUND &&
        status != SM_STATUS_KEY_NOT_FOUND) {
        fprintf(stderr, "service: cannot read %s: %s\n", kSettings, statusName(status));
        return 0;
    }
    *run += 1;
    status = SMWriteINIPathFileValue("Service", "runs", SM_INI_TYPE_UINT32, run, sizeof *run, settings, SM_LOCK_WAIT);
    if (status != SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: cannot update %s: %s\n", kSettings, statusName(status));
        return 0;
    }
    printf("settings: name \"%s\", run %u\n", name, (unsigned)*run);
    return 1;
}

/* Writes the bytes under a temporary name in the directory, then copies them into place with a sync. */
static int publish(const char *directory, const char *fileName, const void *bytes, uint32_t length)
{
    char name[16], temporary[512], final[512];
    uint32_t size = sizeof name;
    FILE *file;
    int ok;

    if (SMGetTmpFile(directory, name, &size) != SM_STATUS_SUCCESS)
        return 0;
    SMsnprintf(temporary, sizeof temporary, "%s/%s", directory, name);
    SMsnprintf(final, sizeof final, "%s/%s", directory, fileName);
    file = fopen(temporary, "wb");
    if (file == NULL)
        return 0;
    ok = fwrite(bytes, 1, length, file) == length;
    ok = fclose(file) == 0 && ok;
    ok = ok && SMFileCopyAndSync(temporary, final, 1) == SM_STATUS_SUCCESS;
    SMDeleteFile(temporary);
    if (ok && SMGetSizeOfFile(final, &size) == SM_STATUS_SUCCESS)
        printf("published %s (%u bytes)\n", final, (unsigned)size);
    return ok;
}

/* Reads the published file back and compares it with the state. */
static int readBack(const char *path, const SDOConfig *state)
{
    uint8_t bytes[4096];
    FILE *file = fopen(path, "rb");
    size_t length;
    uint16_t isArray = 0;
    SDOConfig *copy;
    int same;

    if (file == NULL)
        return 0;
    length = fread(bytes, 1, sizeof bytes, file);
    fclose(file);
    if (length == 0 || length != SMSDOBinaryGetSize(bytes, &isArray) || isArray)
        return 0;
    copy = SMSDOBinaryToConfig(bytes);
    same = copy != NULL && SMSDOConfigCompareByValue(state, copy) == 1;
    SMSDOConfigFree(copy);
    return same;
}

static int work(void)
{
    char name[256], directory[256], path[512], report[512], digest[33];
    uint32_t run = 0, size = sizeof directory;
    SDOConfig *state;
    uint8_t *binary = NULL;
    SMRFC1321Context md5;
    int i, ok = 0;

    if (!readSettings(name, sizeof name, &run))
        return 0;
    SMsnprintf(report, sizeof report, "%s started (run %u).", name, (unsigned)run);
    if (SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, SM_LOG_TYPE_INFORMATION, SM_LOG_CATEGORY_MERIDIAN_SERVICE,
                      EVENT_STARTED, kSource, report, NULL, 0) != SM_STATUS_SUCCESS)
        fprintf(stderr, "service: cannot record the start\n");

    if (SMGetPathByProductIDandType(SM_PRODUCT_MERIDIAN, SM_PATH_KIND_VAR_DATA, directory, &size) !=
        SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: the registry names no var-data directory\n");
        return 0;
    }
    state = describe(name, run, 1500 * run, 3);
    if (state == NULL) {
        fprintf(stderr, "service: cannot describe the state\n");
        return 0;
    }
    /* The object always knows the size of its binary form. */
    size = SMSDOConfigGetBinarySize(state);
    binary = (uint8_t *)SMAllocMem(size);
    if (binary == NULL || SMSDOConfigToBinary(state, binary, &size) != SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: cannot flatten the state\n");
        goto done;
    }
    /* The digest holds four 32-bit words in host order; MD5's usual text writes each word's bytes low first. */
    SMRFC1321Load(&md5);
    SMRFC1321AddMsg(&md5, binary, size);
    SMRFC1321ComputeMsgDigest(&md5);
    for (i = 0; i < 16; ++i) {
        uint32_t word;
        memcpy(&word, md5.digest + 4 * (i / 4), sizeof word);
        SMsnprintf(digest + 2 * i, 3, "%02x", (unsigned)((word >> (8 * (i % 4))) & 0xFF));
    }
    SMRFC1321UnLoad(&md5);

    SMsnprintf(path, sizeof path, "%s/service-state.sdo", directory);
    if (!publish(directory, "service-state.sdo", binary, size) || !readBack(path, state)) {
        fprintf(stderr, "service: cannot publish the state in %s\n", directory);
        goto done;
    }
    SMsnprintf(report, sizeof report, "Published its state: %u entries, %u bytes, crc32 %08X, md5 %s.",
               (unsigned)SMSDOConfigGetCount(state), (unsigned)size, SMCRC32Compute_vn(binary, size), digest);
    puts(report);
    ok =
        SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, SM_LOG_TYPE_INFORMATION, SM_LOG_CATEGORY_MERIDIAN_SERVICE,
                      EVENT_REPORT, kSource, report, binary, size) == SM_STATUS_SUCCESS;
    if (!ok)
        fprintf(stderr, "service: cannot record the report\n");

done:
    SMFreeMem(binary);
    SMSDOConfigFree(state);
    return ok;
}

int main(void)
{
    void *mutex;
    int32_t status;
    int ok;

    if (SUPTGetMajorVersion() != 1) {
        fprintf(stderr, "service: built for interface 1, found %u\n", (unsigned)SUPTGetMajorVersion());
        return 1;
    }
    printf("libzksupt interface %u.%u revision %u\n", (unsigned)SUPTGetMajorVersion(), (unsigned)SUPTGetMinorVersion(),
           (unsigned)SUPTGetRevision());

    /* One instance works at a time: the mutex is shared by every process of this installation. */
    mutex = SMMutexCreate("zksupt_service");
    status = mutex != NULL ? SMMutexLock(mutex, SM_WAIT_NONE) : SM_STATUS_FAILURE;
    if (status != SM_STATUS_SUCCESS) {
        fprintf(stderr, "service: %s\n",
                status == SM_STATUS_TIMEOUT ? "another instance is running" : "cannot take the service mutex");
        SMMutexDestroy(mutex);
        return 1;
    }
    ok = work();
    SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
    return SMOSShutdown() == SM_STATUS_SUCCESS && ok ? 0 : 1;
}
