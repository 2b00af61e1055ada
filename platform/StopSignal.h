#pragma once

/**
 * The request to stop that the operating system sends to a process: on Linux SIGINT, SIGTERM, or SIGHUP
 * unless that is ignored.
 *
 * Create it on the main thread before any other thread starts, so that the signal interrupts no other thread.
 * From then on, writing to a closed connection does not end the process.
 */
class CStopSignal {
  public:
    CStopSignal();

    /** Returns when the process has been asked to stop, even before the call. */
    void Wait();
};
