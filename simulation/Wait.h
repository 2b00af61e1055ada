#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace simulation {

using std::chrono::milliseconds;

/**
 * Limit of every wait for something that must happen. It guards against a hang and measures nothing: it is
 * long enough for a loaded machine and a build with sanitizers.
 */
inline constexpr milliseconds kMaxTestWait{20000};

/** Something that must happen did not happen within the limit. */
class TimedOut : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Evaluates the condition again and again until it holds. @return false when the limit was reached first. */
template <class Condition>
bool WaitUntil(Condition condition, milliseconds limit = kMaxTestWait) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

}  // namespace simulation
