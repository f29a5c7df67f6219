/*
 * SDO: a service describes a disk as a typed property set, nests it in its
 * report, flattens the report into the binary form the suite's components
 * exchange, and reads a value back from the bytes.
 */
#include <stdio.h>
#include <string.h>

#include <zksupt/zksupt.h>

enum { ID_NAME = 1, ID_DISK = 2, ID_CAPACITY = 10, ID_HEALTHY = 11 };

int main(void)
{
    SDOConfig *report = SMSDOConfigAlloc();
    SDOConfig *disk = SMSDOConfigAlloc();
    ucs2 name[16];
    uint32_t nameSize = sizeof name;
    uint64_t capacity = 4000787030016ull, readBack = 0;
    uint8_t healthy = 1;
    uint8_t type = 0;
    uint32_t size = 0;
    void *binary = NULL;
    int ok = 0;

    if (report == NULL || disk == NULL) {
        SMSDOConfigFree(disk);
        goto done;
    }
    /* Inside an SDO type 13 means a nested object, never a UTF-8 string: text goes in as UCS-2. A value's size
     * counts every byte the SDO copies, the terminator too. */
    if (SMUTF8StrToUCS2Str(name, &nameSize, "array-0") != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(report, ID_NAME, SM_TYPE_UCS2, name, nameSize, 0) != SM_STATUS_SUCCESS ||
        SMSDOConfigAddData(disk, ID_CAPACITY, SM_TYPE_UINT64, &capacity, sizeof capacity, 0) != SM_STATUS_SUCCESS ||
        /* A type byte of 0 is refused, so a flag is stored as an 8-bit number, not as SM_TYPE_BOOLEAN. */
        SMSDOConfigAddData(disk, ID_HEALTHY, SM_TYPE_UINT8, &healthy, sizeof healthy, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(disk);
        goto done;
    }
    /* A nested object is passed as the handle itself: from here on the report owns the disk. */
    if (SMSDOConfigAddData(report, ID_DISK, SM_SDO_TYPE_OBJECT, disk, sizeof disk, 0) != SM_STATUS_SUCCESS) {
        SMSDOConfigFree(disk);
        goto done;
    }

    /* The object always knows the size of its binary form. */
    size = SMSDOConfigGetBinarySize(report);
    binary = SMAllocMem(size);
    if (binary == NULL || SMSDOConfigToBinary(report, binary, &size) != SM_STATUS_SUCCESS)
        goto done;
    printf("report: %u entries, %u bytes of binary form\n", (unsigned)SMSDOConfigGetCount(report), (unsigned)size);

    /* Read back, the nested entry's value is the child's handle, still owned by its parent. */
    {
        SDOConfig *copy = SMSDOBinaryToConfig(binary);
        SDOConfig *nested = NULL;
        uint32_t handleSize = sizeof nested, valueSize = sizeof readBack;
        if (copy != NULL && SMSDOConfigGetDataByID(copy, ID_DISK, &type, &nested, &handleSize) == SM_STATUS_SUCCESS &&
            (type & SM_SDO_TYPE_BASE_MASK) == SM_SDO_TYPE_OBJECT &&
            SMSDOConfigGetDataByID(nested, ID_CAPACITY, &type, &readBack, &valueSize) == SM_STATUS_SUCCESS)
            ok = type == SM_TYPE_UINT64 && readBack == capacity && SMSDOConfigCompareByValue(report, copy) == 1;
        SMSDOConfigFree(copy);
    }
    printf("capacity read back: %llu (%s)\n", (unsigned long long)readBack, ok ? "same" : "different");

done:
    SMFreeMem(binary);
    SMSDOConfigFree(report);
    return ok ? 0 : 1;
}
