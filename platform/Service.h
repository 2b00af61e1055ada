#pragma once

#include <functional>
#include <string_view>

/**
 * Carries out `--service <verb>`. "install" registers the program as a service of the system that starts with
 * the machine and is restarted after a failure, and starts it. "remove" undoes that. The system itself starts
 * the service with "run".
 * @param run  the work of the service, which ends when CStopSignal says so; returns the exit status
 * @return the exit status of the program; 2 for another verb, or on systems without such services
 */
int HandleServiceCommand(std::string_view verb, const std::function<int()>& run);
