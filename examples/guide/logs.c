/*
 * Logs: a service records an event in the suite's text and XML event logs
 * (in the "log" directory under the installation's log path) and writes a
 * line of its own trace into a plain-text log that rotates through numbered
 * generations.
 */
#include <stdio.h>

#include <zksupt/zksupt.h>

/* A status's name for messages ("KEY_NOT_FOUND"). */
static const char *statusName(int32_t status)
{
    const char *name = zksupt_status_name(status);
    return name != NULL ? name : "unknown status";
}

int main(void)
{
    char textLog[256], xmlLog[256], trace[512];
    uint32_t textSize = sizeof textLog, xmlSize = sizeof xmlLog, bytes = 0;
    int32_t status;
    int ok;

    /* One event to both logs. The status is the XML log's: the text log's own result is not reported, and a
     * category outside the SM_LOG_CATEGORY_* values is silently not written, so use the named values. */
    status = SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, SM_LOG_TYPE_INFORMATION,
                           SM_LOG_CATEGORY_MERIDIAN_SERVICE, 1000, "guide", "The guide service started.", NULL, 0);
    if (status != SM_STATUS_SUCCESS || SMGetLogPathFileName(SM_LOG_TARGET_TEXT, textLog, &textSize) != 0 ||
        SMGetLogPathFileName(SM_LOG_TARGET_XML, xmlLog, &xmlSize) != 0) {
        fprintf(stderr, "logs: cannot record the event: %s\n", statusName(status));
        return 1;
    }
    /* The text log is UCS-2 after a 256-byte header block: check that the record went in behind it. */
    ok = SMGetSizeOfFile(textLog, &bytes) == SM_STATUS_SUCCESS && bytes > 256;
    printf("event recorded in zksys32.log (%s) and zksys32.xml\n", ok ? "found" : "missing");

    /* A trace of its own beside the event logs: at most 64 KiB a file, three older generations kept. */
    SMsnprintf(trace, sizeof trace, "%s.trace", textLog);
    if (SMFileLogMsgToRotatedLog("guide: started", trace, 65536, 3,
                                 SM_ROTATED_LOG_TIME | SM_ROTATED_LOG_PROCESS_THREAD | SM_ROTATED_LOG_NEWLINE) !=
        SM_STATUS_SUCCESS)
        ok = 0;
    ok = ok && SMGetSizeOfFile(trace, &bytes) == SM_STATUS_SUCCESS && bytes > 0;
    printf("trace line written: %s\n", ok ? "yes" : "no");
    SMFileDeleteRotated(trace, 1, 3);
    return ok ? 0 : 1;
}
