#pragma once

#include "platform/linux/SerialNameTable.h"

/** Looks at all lines of the machine, names them, and notes new names in the table. Any thread. */
NamedLines NameSerialLines();
