// A module with a thread, which is asked at the end of the process whether it still runs.
#include "platform/ProcessEnd.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

void BeginWork();

namespace {

/** What the thread waits for, and is waited for. Never destroyed, since the thread outlives main. */
struct SWork {
    std::mutex mutex;
    std::condition_variable changed;
    bool isAsked = false;
};

SWork& Work() {
    static auto* const work = new SWork;
    return *work;
}

void Ask(const char* who) {
    std::unique_lock lock(Work().mutex);
    Work().isAsked = true;
    Work().changed.notify_all();
    Work().changed.wait(lock, [] { return !Work().isAsked; });
    std::printf("%s: the thread answers\n", who);
    std::fflush(stdout);
}

[[noreturn]] void Answer() {
    for (std::unique_lock lock(Work().mutex);;) {
        Work().changed.wait(lock, [] { return Work().isAsked; });
        Work().isAsked = false;
        Work().changed.notify_all();
    }
}

}  // namespace

void BeginWork() {
    std::thread(Answer).detach();
    CallAtProcessEnd([] { Ask("first"); });
    CallAtProcessEnd([] { Ask("last"); });
}
