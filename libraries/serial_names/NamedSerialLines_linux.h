#pragma once

#include "libraries/serial_names/SerialNameTable_linux.h"

/** Finds and names all lines of the machine, and records new names in the table. Any thread. */
NamedLines NameSerialLines();
