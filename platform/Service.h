#pragma once

#include <functional>
#include <string_view>

/**
 * Carries out `--service <verb>`: "install" registers the program as a service of the system that starts with
 * the machine and is started again after a failure, and starts it; "remove" takes it back, "run" is what the
 * system starts it with.
 * @param run  the work of the service, which ends when CStopSignal says so; gives the exit status
 * @return the exit status of the program; 2 for another verb, or where the system has no such services
 */
int HandleServiceCommand(std::string_view verb, const std::function<int()>& run);
