/*
 * A minimal suite service on top of libzksupt. The library attaches itself
 * when the program loads it and finds its installation through the product
 * registry file (here the sandbox that ZKSUPT_REGISTRY names). The service
 * checks the interface version it was built for, works with memory that the
 * library hands out, and shuts down through the library.
 */
#include <stdio.h>
#include <string.h>

#include <zksupt/zksupt.h>

int main(void)
{
    void *context = NULL;
    char *banner;
    int32_t status;

    if (SUPTGetMajorVersion() != 1) {
        fprintf(stderr, "service: built for interface 1, found %u\n", (unsigned)SUPTGetMajorVersion());
        return 1;
    }
    printf("libzksupt interface %u.%u revision %u\n",
           (unsigned)SUPTGetMajorVersion(), (unsigned)SUPTGetMinorVersion(), (unsigned)SUPTGetRevision());

    SMGetExportContext(&context);
    SMSetExportContext(context);

    banner = (char *)SMAllocMem(64);
    if (banner == NULL) {
        fprintf(stderr, "service: out of memory\n");
        return 1;
    }
    strcpy(banner, "service started");
    printf("%s\n", banner);
    SMFreeMem(banner);

    SMResetExportContext(context);
    status = SMOSShutdown();
    printf("shutdown status %d\n", (int)status);
    return status == SM_STATUS_SUCCESS ? 0 : 1;
}
