#include "common/core/ErrorTrap.h"

#include <cstdlib>
#include <new>

namespace kesta {

RuntimeError asRuntimeError(const std::exception& error)
{
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr)
        return RuntimeError(7, "Out of memory");
    return RuntimeError(err::InvalidCall, err::describe(err::InvalidCall));
}

void failRunTime(Host& host, const RuntimeError& error)
{
    host.messageBox({"KESTA DEMO",
                     "Run-time error '" + std::to_string(error.number()) + "':\r\n\r\n" + error.description(),
                     MessageIcon::Critical, MessageButtons::Ok});
    host.endProgram(1);
    std::abort(); // not reached: ending the program does not return
}

} // namespace kesta
