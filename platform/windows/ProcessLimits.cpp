#include "platform/ProcessLimits.h"

#include <cstdio>

void RaiseDescriptorLimit() {
    // Sockets have no limit; open files of the runtime have one of 512, and 2,048 is the most that it takes.
    _setmaxstdio(2048);
}
