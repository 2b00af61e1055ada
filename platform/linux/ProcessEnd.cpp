#include "platform/ProcessEnd.h"

#include <cstdlib>
#include <new>

void CallAtProcessEnd(void (*function)()) {
    if (std::atexit(function) != 0) {
        throw std::bad_alloc();
    }
}
