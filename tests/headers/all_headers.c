/* Compiled, never run: every public header through the umbrella header, as C
 * and as C++ of each standard a caller may use. A header that needs a newer
 * language, or warns, fails its test. */
#include <zksupt/zksupt.h>

/* Uses what the headers give, so that an unused inline function or a broken
 * declaration shows up. */
int main(void)
{
    const char *name = zksupt_status_name(SM_STATUS_NOT_FOUND);
    ucs2 unit = 0;
    return (name != NULL && SMUCS2Strlen(&unit) == 0) ? 0 : 1;
}
