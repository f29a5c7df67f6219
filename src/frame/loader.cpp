// The shared library's load constructor and unload destructor. Only the
// shared library carries this file; test programs that link the core
// statically attach and detach explicitly.
#include "frame/lifecycle.h"

namespace {

__attribute__((constructor)) void attachOnLoad()
{
    zksupt::frame::library().attach();
}

__attribute__((destructor)) void detachOnUnload()
{
    zksupt::frame::library().detach();
}

}  // namespace
