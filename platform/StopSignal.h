#pragma once

/**
 * The request to stop that the operating system sends to a process: SIGINT, SIGTERM, or SIGHUP unless it is
 * ignored, on Linux.
 *
 * Made on the main thread before any other thread is started, so that no other thread is interrupted by it.
 * Writing to a closed connection is no reason to end the process from then on.
 */
class CStopSignal {
  public:
    CStopSignal();

    /** Returns when the process has been asked to stop, also when that was before the call. */
    void Wait();
};
