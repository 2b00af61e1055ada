#pragma once

#include "simulation/Socket.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/** What one run of the load generator saw. */
struct LoadResult {
    std::uint64_t replies = 0;
    double seconds = 0;
    std::vector<double> microseconds;  ///< of each reply or, for clicks one at a time, of each arrival
};

/** The value below which the given share (0 to 1) of the values lies. */
double Quantile(std::vector<double> values, double share);

/**
 * Sends requests over keep-alive connections and takes what the equipment receives, all on the calling thread
 * with one epoll. Each connection has one request under way at a time.
 */
class LoadGenerator {
  public:
    LoadGenerator();
    ~LoadGenerator();
    LoadGenerator(const LoadGenerator&) = delete;
    LoadGenerator& operator=(const LoadGenerator&) = delete;

    /** Port of the equipment: accepts any number of connections and drains them while a run is going on. */
    int EquipmentPort() const { return m_listener.LocalPort(); }

    /** Bytes that the equipment has received since the generator was made. */
    std::uint64_t EquipmentBytes() const { return m_equipmentBytes; }

    /**
     * Runs for the given time: each connection sends the requests in turn, each from a starting point of its
     * own. @throw std::runtime_error for a reply that is no success.
     */
    LoadResult Run(int port, const std::vector<std::string>& requests, int connections,
                   std::chrono::milliseconds time);

    /**
     * Clicks one at a time for the given time and measures from the request's write to its first byte at the
     * equipment. Polls without sleeping, so that the waking of the measuring thread is no part of it.
     */
    LoadResult Click(int port, const std::vector<std::string>& requests, std::size_t payloadSize,
                     std::chrono::milliseconds time);

    /** Takes what is on its way to the equipment until it has so many bytes. @return whether it came */
    bool DrainEquipment(std::uint64_t bytes);

  private:
    struct Connection;

    void Watch(int handle) const;
    void ReadEquipment(int handle);
    void AcceptEquipment();

    simulation::Socket m_listener;
    std::vector<simulation::Socket> m_equipment;
    std::uint64_t m_equipmentBytes = 0;
    int m_poll;
    std::vector<char> m_buffer;
};

}  // namespace bench
