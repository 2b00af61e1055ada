// Serial lines with a driver that hangs, or still has bytes to send. The program's own calls of the system
// are passed through: what a pseudo terminal never does is put in their way.

#include "tests/comm/SerialFixture.h"

#include <condition_variable>
#include <cstdarg>
#include <mutex>

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using comm::Clock;

class Driver {
  public:
    enum Call : unsigned long { None, Open = 1, Settings = TCSETS2, Close = TCFLSH };

    /** Has one call hang until another, or None, is given. */
    void Hang(Call call) {
        const std::lock_guard lock(m_mutex);
        m_hanging = call;
        m_isMet = false;
        m_changed.notify_all();
    }
    bool WaitUntilMet() {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), [this] { return m_isMet; });
    }

    void Pass(unsigned long call) {
        std::unique_lock lock(m_mutex);
        if (call == Settings) {
            m_setAt = Clock::now();
            m_busyWhenSet = m_busy;
        }
        if (call == m_hanging) {
            m_isMet = true;
            m_changed.notify_all();
            m_changed.wait(lock, [this, call] { return call != m_hanging; });
        }
    }

    /** Has the next questions for the state of the device answered with busy, and later ones with empty. */
    void Tell(int busy) {
        const std::lock_guard lock(m_mutex);
        m_busy = busy;
    }
    /** The state of the device, if the driver reports it. */
    std::optional<unsigned int> State() {
        const std::lock_guard lock(m_mutex);
        if (!m_busy) {
            return std::nullopt;
        }
        if (*m_busy > 0) {
            --*m_busy;
            return 0U;
        }
        return TIOCSER_TEMT;
    }

    /** When settings were last applied, and how often the device was to be busy from then on. */
    Clock::time_point SetAt() const { return m_setAt; }
    int BusyWhenSet() const { return m_busyWhenSet.value_or(0); }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned long m_hanging = None;
    bool m_isMet = false;
    std::optional<int> m_busy;
    std::optional<int> m_busyWhenSet;
    Clock::time_point m_setAt;
};

std::atomic<Driver*> g_driver = nullptr;

class SerialDriver : public SerialLine {
  protected:
    SerialDriver() {
        Begin(std::chrono::seconds(10));
        g_driver = &m_driver;
    }
    ~SerialDriver() override {
        m_driver.Hang(Driver::None);
        m_comm.reset();
        g_driver = nullptr;
    }

    /** A port library with this limit of a serial send. */
    void Begin(std::chrono::seconds serialBound) {
        comm::SCommSettings settings = CommFixture::Settings(std::chrono::seconds(3));
        settings.serialBound = serialBound;
        m_comm.emplace(settings);
    }
    std::future<int> SendLater(const std::string& text, std::uint32_t speed) {
        return std::async(std::launch::async, [this, text, speed] { return Send(text, speed); });
    }

    const PtyPair m_line{m_link};
    Driver m_driver;
};

TEST_F(SerialDriver, ThatHangsHoldsUpNobodyElse) {
    const simulation::TcpListener device;
    const auto record = CommFixture::Client(device.Port());
    std::string sent;
    const auto send = [&](const std::string& text) {
        sent += text;
        EXPECT_EQ(Send(text, 9600), 0);
        EXPECT_EQ(m_line.Received().WaitBytes(sent.size()), sent);
    };
    for (const auto call : {Driver::Open, Driver::Settings, Driver::Close}) {
        SCOPED_TRACE(call);
        if (call != Driver::Open) {
            send("before");
        }
        m_driver.Hang(call);
        std::future<int> sender;
        if (call != Driver::Close) {
            sender = SendLater("cut", 19200);
            ASSERT_TRUE(m_driver.WaitUntilMet());
            if (call == Driver::Settings) {
                m_line.Send("news for the line's watcher");
            }
            EXPECT_EQ(m_comm->Send(record, "a"), 0);
        }
        auto deleter = std::async(std::launch::async, [this] { m_comm->registry.DeleteAll(); });
        EXPECT_EQ(deleter.wait_for(std::chrono::seconds(3)), std::future_status::ready);
        EXPECT_TRUE(m_driver.WaitUntilMet());
        EXPECT_EQ(m_comm->Send(record, "a"), 0);
        if (sender.valid()) {
            EXPECT_EQ(sender.wait_for(std::chrono::seconds(3)), std::future_status::ready);
            m_driver.Hang(Driver::None);
            EXPECT_EQ(sender.get(), 995);
        }
        m_driver.Hang(Driver::None);
        send("after");
        m_comm->registry.DeleteAll();
    }
}

TEST_F(SerialDriver, ThatHangsFailsFurtherCallsAtOnceUntilItIsBack) {
    Begin(std::chrono::seconds(2));
    ASSERT_EQ(Send("a", 9600), 0);
    m_driver.Hang(Driver::Settings);
    auto first = SendLater("late", 19200);
    ASSERT_TRUE(m_driver.WaitUntilMet());
    ASSERT_EQ(first.wait_for(std::chrono::seconds(8)), std::future_status::ready);
    EXPECT_EQ(first.get(), 121);
    const auto start = Clock::now();
    EXPECT_EQ(Send("at once"), 121);
    EXPECT_EQ(Check(), 121);
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1900)) << "a bound was waited for";
    m_driver.Hang(Driver::None);
    EXPECT_TRUE(simulation::WaitUntil([&] { return Send("b") == 0; }));
    EXPECT_EQ(m_line.Received().WaitBytes(2), "ab") << "a command that has failed went out later";
}

TEST_F(SerialDriver, OtherSettingsWaitUntilTheDeviceHasSentTheLastByte) {
    Begin(std::chrono::seconds(1));
    ASSERT_EQ(Send("a", 9600), 0);
    m_driver.Tell(5);
    EXPECT_EQ(Send("b", 19200), 0);
    EXPECT_EQ(m_driver.BusyWhenSet(), 0);
    m_driver.Tell(1000000);
    EXPECT_EQ(Check(1200), 0) << "busy, so it is there";
    EXPECT_EQ(Send("c", 1200), 121);
    EXPECT_EQ(Send("d", 1200), 0) << "closed with the error, and opened again";
    EXPECT_EQ(m_line.Received().WaitBytes(3), "abd");
}

TEST_F(SerialDriver, OtherSettingsWaitForTheTimeOfTheBytesWhereTheDeviceTellsNothing) {
    const auto start = Clock::now();
    ASSERT_EQ(Send(std::string(40, 'a'), 1200), 0);
    ASSERT_EQ(Send("b", 9600), 0);
    EXPECT_GE(m_driver.SetAt() - start, std::chrono::milliseconds(400 * 1000 / 1200));
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const unsigned mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, unsigned) : 0;
    va_end(more);
    if (Driver* driver = g_driver; driver != nullptr && (flags & O_NOCTTY) != 0) {
        driver->Pass(Driver::Open);
    }
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) {
    va_list more;
    va_start(more, request);
    void* argument = va_arg(more, void*);
    va_end(more);
    if (Driver* driver = g_driver; driver != nullptr) {
        driver->Pass(request);
        if (request == TIOCSERGETLSR) {
            if (const auto state = driver->State()) {
                *static_cast<unsigned int*>(argument) = *state;
                return 0;
            }
        }
    }
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}
