// Statuses as the tests print them: the name status.h gives them; and what
// a call under the in/out size rule hands back, as one comparable text.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace zksupt::test {

// The name without its SM_STATUS_ prefix ("KEY_NOT_FOUND"), or the number
// for a status no name has.
std::string statusName(int32_t status);

// Calls call(buffer, &size) with a buffer of capacity bytes: on SUCCESS the text before its terminator, which *size
// must count; otherwise the status name and *size ("BUFFER_TOO_SMALL size 6"), with " written" when the buffer was
// touched.
std::string textOut(uint32_t capacity, const std::function<int32_t(char *, uint32_t *)> &call);

}  // namespace zksupt::test
