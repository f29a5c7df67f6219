/* A small shared library that the operating-system tests load by path. */

int zksupt_plugin_twice(int value)
{
    return 2 * value;
}

int zksupt_plugin_answer(void)
{
    return 42;
}
