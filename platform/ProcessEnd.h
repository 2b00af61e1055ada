#pragma once

/**
 * Registers a function that is called at the end of the process's main, or in exit, while all threads still
 * run. Wait for threads there: the destructors of a Windows module's objects run too late for it. The
 * function registered last is called first. The module that contains it stays loaded until the process ends.
 * Any thread.
 */
void CallAtProcessEnd(void (*function)());
