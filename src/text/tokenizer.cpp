#include <atomic>

#include "text/ucs2_string.h"
#include "text/units.h"

namespace zksupt::text {
namespace {

// Where the next call with a null string goes on: one position for the whole
// process. It is atomic only so that concurrent callers are not undefined
// behaviour; they still share (and disturb) the one position.
std::atomic<ucs2 *> savedPosition{nullptr};

}  // namespace

ucs2 *ucs2Tokenize(ucs2 *s, const ucs2 *delims) noexcept
{
    if (s == nullptr) {
        s = savedPosition.load(std::memory_order_relaxed);
        if (s == nullptr)
            return nullptr;
    }
    ucs2 *token = s + prefixLength<true>(s, delims);
    if (*token == 0) {
        savedPosition.store(nullptr, std::memory_order_relaxed);
        return nullptr;
    }
    ucs2 *end = token + prefixLength<false>(token, delims);
    ucs2 *next = nullptr;
    if (*end != 0) {
        *end = 0;
        next = end + 1;
    }
    savedPosition.store(next, std::memory_order_relaxed);
    return token;
}

}  // namespace zksupt::text
