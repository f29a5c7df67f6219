#include "frame/info.h"

namespace zksupt::frame {

void getExportContext(void **context) noexcept
{
    if (context != nullptr)
        *context = nullptr;
}

void ignoreExportContext(void *) noexcept {}

int32_t shutdown() noexcept
{
    return 0;
}

}  // namespace zksupt::frame
