#include "platform/StopSignal.h"

#include <csignal>

#include <pthread.h>

namespace {

sigset_t StopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    struct sigaction hangUp {};
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        sigaddset(&signals, SIGHUP);  // the terminal was closed; ignored below nohup
    }
    return signals;
}

}  // namespace

CStopSignal::CStopSignal() {
    const sigset_t signals = StopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

void CStopSignal::Wait() {
    const sigset_t signals = StopSignals();
    int received = 0;
    while (sigwait(&signals, &received) != 0) {
    }
}
