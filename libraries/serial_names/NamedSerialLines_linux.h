#pragma once

#include "libraries/serial_names/SerialNameTable_linux.h"

/** Looks at all lines of the machine, names them, and notes new names in the table. Any thread. */
NamedLines NameSerialLines();
