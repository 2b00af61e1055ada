#pragma once

#include "simulation/Socket.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/** Results of one run of the load generator. */
struct LoadResult {
    std::uint64_t replies = 0;
    double seconds = 0;
    std::vector<double> microseconds;  ///< of each reply or, for clicks one at a time, of each arrival
};

/** The value below which the given share (0 to 1) of the values lies. */
double Quantile(std::vector<double> values, double share);

/**
 * Sends requests over keep-alive connections and receives what reaches the equipment, all on the calling
 * thread with one epoll. Each connection has one request under way at a time.
 */
class LoadGenerator {
  public:
    LoadGenerator();
    ~LoadGenerator();
    LoadGenerator(const LoadGenerator&) = delete;
    LoadGenerator& operator=(const LoadGenerator&) = delete;

    /** Port of the equipment, which accepts any number of connections and drains them during a run. */
    int EquipmentPort() const { return m_listener.LocalPort(); }

    /** Bytes that the equipment has received since the generator was created. */
    std::uint64_t EquipmentBytes() const { return m_equipmentBytes; }

    /**
     * Runs for the given time: each connection sends the requests in turn, beginning at a different one.
     * @throw std::runtime_error for a reply that is not a success.
     */
    LoadResult Run(int port, const std::vector<std::string>& requests, int connections,
                   std::chrono::milliseconds time);

    /**
     * Clicks, one at a time, for the given time. Measures from the write of a request to its first byte at
     * the equipment. Polls without sleeping, so that the time to wake the measuring thread is not included.
     */
    LoadResult Click(int port, const std::vector<std::string>& requests, std::size_t payloadSize,
                     std::chrono::milliseconds time);

    /** Receives bytes at the equipment until it has this many. @return whether they came */
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
