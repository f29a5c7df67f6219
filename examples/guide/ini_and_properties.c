/*
 * INI and property files: a service keeps its settings in an INI file in
 * the installation's ini directory and reads a typed value of a property
 * file. Every call locks the file, works on it and closes it again: there is
 * nothing to open or close.
 */
#include <stdio.h>

#include <zksupt/zksupt.h>

/* A status's name for messages ("KEY_NOT_FOUND"). */
static const char *statusName(int32_t status)
{
    const char *name = zksupt_status_name(status);
    return name != NULL ? name : "unknown status";
}

/* Bare file names of the plain INI calls live in <ini path>/ini/. */
static const char settings[] = "guide.ini";

int main(void)
{
    uint32_t port = 5986, readPort = 0, timeout = 0, fallback = 30, size;
    char directory[256], properties[512];
    int32_t status;
    FILE *file;
    int ok = 1;

    /* Write a typed value: the library writes it as text ("5986") through a copy that replaces the file. */
    status = SMWriteINIFileValue("Network", "port", SM_INI_TYPE_UINT32, &port, sizeof port, settings, SM_LOCK_WAIT);
    size = sizeof readPort;
    if (status != SM_STATUS_SUCCESS || SMReadINIFileValue("Network", "port", SM_INI_TYPE_UINT32, &readPort, &size, NULL,
                                                          0, settings, SM_LOCK_WAIT) != SM_STATUS_SUCCESS) {
        fprintf(stderr, "ini_and_properties: cannot write and read the port\n");
        return 1;
    }
    printf("Network.port = %u\n", (unsigned)readPort);

    /* A missing key still gives its status when the default was copied: check the status, not the value. */
    size = sizeof timeout;
    status = SMReadINIFileValue("Network", "timeout", SM_INI_TYPE_UINT32, &timeout, &size, &fallback, sizeof fallback,
                                settings, SM_LOCK_WAIT);
    printf("Network.timeout: %s, value %u\n", statusName(status), (unsigned)timeout);
    ok = ok && status == SM_STATUS_KEY_NOT_FOUND && timeout == fallback;

    /* A property file takes SDO type codes; it lives here in the var-data directory. */
    size = sizeof directory;
    if (SMGetPathByProductIDandType(SM_PRODUCT_MERIDIAN, SM_PATH_KIND_VAR_DATA, directory, &size) != SM_STATUS_SUCCESS)
        return 1;
    SMsnprintf(properties, sizeof properties, "%s/guide.properties", directory);
    file = fopen(properties, "w");
    if (file == NULL)
        return 1;
    fputs("# written by the guide\nservice.name = guide\nservice.port = 80\n", file);
    fclose(file);

    /* Writing replaces an existing key only: a key the file lacks would leave an empty file behind. */
    status = SMPropertyFileWriteValue("service.port", SM_TYPE_UINT32, &port, sizeof port, properties, SM_LOCK_WAIT);
    size = sizeof readPort;
    readPort = 0;
    if (status != SM_STATUS_SUCCESS || SMPropertyFileReadValue("service.port", SM_TYPE_UINT32, &readPort, &size, NULL,
                                                               0, properties, SM_LOCK_WAIT) != SM_STATUS_SUCCESS)
        ok = 0;
    printf("service.port = %u\n", (unsigned)readPort);
    ok = ok && readPort == port;
    SMDeleteFile(properties);
    return ok ? 0 : 1;
}
