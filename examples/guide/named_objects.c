/*
 * Named objects: two processes of a service share a named mutex and a named
 * event. The names live in the installation's IPC directory, so every
 * process that reads the same registry file meets the same objects.
 *
 * A handle belongs to one process: its threads share that handle, while
 * another process makes or opens its own by name.
 */
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zksupt/zksupt.h>

/*
 * The parent's handles. The forked child inherits them but leaves them to
 * the parent (destroying the creator's event handle would remove the event);
 * it makes handles of its own by name.
 */
static void *mutex, *ready;

/* The child: finds the mutex busy, says so through the event, then waits for its turn. */
static int child(void)
{
    void *work = SMMutexOpen("guide.work");
    void *seen = SMEventOpen("guide.ready");
    int ok = work != NULL && seen != NULL && SMMutexLock(work, SM_WAIT_NONE) == SM_STATUS_TIMEOUT &&
             SMEventSet(seen) == SM_STATUS_SUCCESS && SMMutexLock(work, SM_WAIT_FOREVER) == SM_STATUS_SUCCESS;

    if (ok)
        SMMutexUnLock(work);
    SMEventDestroy(seen);
    SMMutexDestroy(work);
    return ok ? 0 : 1;
}

int main(void)
{
    int status = 0, ok = 0;
    pid_t pid;

    mutex = SMMutexCreate("guide.work");
    /* Automatic reset, not signalled yet. */
    ready = SMEventCreate("guide.ready", 0, 0);
    if (mutex == NULL || ready == NULL || SMMutexLock(mutex, SM_WAIT_FOREVER) != SM_STATUS_SUCCESS) {
        fprintf(stderr, "named_objects: cannot create or take the objects\n");
        goto done;
    }
    pid = fork();
    if (pid == 0)
        _exit(child());
    /* Hold the mutex until the child has seen it taken (at most 10 s). */
    ok = pid > 0 && SMEventWait(ready, 10000) == SM_STATUS_SUCCESS;
    SMMutexUnLock(mutex);
    ok = pid > 0 && waitpid(pid, &status, 0) == pid && ok && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    printf("the other process %s its turn at the named mutex\n", ok ? "waited for" : "did not wait for");

done:
    /* The creator's handle removes the event; the mutex's lock file stays for the next run. */
    SMEventDestroy(ready);
    SMMutexDestroy(mutex);
    return ok ? 0 : 1;
}
