// How far the stress tests scale their work down: ZKSUPT_STRESS_SCALE (a
// divisor, 1 when unset or not a positive number). The valgrind build sets
// it, as every instruction runs many times slower there.
#pragma once

#include <cstdlib>

namespace zksupt::test {

inline int stressScale()
{
    const char *text = std::getenv("ZKSUPT_STRESS_SCALE");
    const int scale = text != nullptr ? std::atoi(text) : 1;
    return scale > 0 ? scale : 1;
}

// count divided by the scale, never below 1.
inline int scaled(int count)
{
    const int result = count / stressScale();
    return result > 0 ? result : 1;
}

}  // namespace zksupt::test
