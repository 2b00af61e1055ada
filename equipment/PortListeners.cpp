#include "equipment/PortListeners.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace {

/** Passes everything on to all listeners, without a lock. */
class CPortListeners final : public CPortListener {
  public:
    void Add(CPortListener& listener) {
        for (std::atomic<CPortListener*>& place : m_listeners) {
            CPortListener* none = nullptr;
            if (place.compare_exchange_strong(none, &listener)) {
                return;
            }
        }
    }

    void OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept override {
        ForAll([&](CPortListener& listener) { listener.OnSent(port, bytes, error); });
    }
    void OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept override {
        ForAll([&](CPortListener& listener) { listener.OnReceived(port, peer, bytes); });
    }
    void OnState(std::uint64_t port, EnPortState state) noexcept override {
        ForAll([&](CPortListener& listener) { listener.OnState(port, state); });
    }
    void OnEnded(std::uint64_t port) noexcept override {
        ForAll([&](CPortListener& listener) { listener.OnEnded(port); });
    }

  private:
    template <typename Call>
    void ForAll(Call call) const noexcept {
        for (const std::atomic<CPortListener*>& place : m_listeners) {
            if (CPortListener* const listener = place) {
                call(*listener);
            }
        }
    }

    /** As many as there are rooms that listen: traffic and values. */
    std::array<std::atomic<CPortListener*>, 2> m_listeners{};
};

}  // namespace

void AddPortListener(CPortListener& listener) {
    // Never destroyed: ports that end late still tell it.
    static auto* const all = new CPortListeners;
    all->Add(listener);
    ListenToPorts(all);
}
