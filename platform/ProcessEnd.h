#pragma once

/**
 * Has a function called at the end of the process's main, or in exit, while all threads still run: the place
 * to wait for threads, which the destructors of a Windows module's objects can't do. The function registered
 * last is called first. The module that it lies in stays loaded to the end of the process. Any thread.
 */
void CallAtProcessEnd(void (*function)());
