#pragma once

#include "simulation/Equipment.h"

#include <filesystem>

namespace simulation {

/**
 * A serial line: the device that the server opens, and its other side, which records what arrives. The line
 * starts with a terminal's usual settings, so that the tests notice when a program does not make it raw.
 */
class PtyPair {
  public:
    /** Creates the pair, and a link to its device at the given place. */
    explicit PtyPair(const std::filesystem::path& link);
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    const std::filesystem::path& Device() const { return m_link; }
    const Recorder& Received() const { return m_received; }

    /**
     * Sends an answer of the equipment. Any thread. @throw std::system_error when the line does not take it
     */
    void Send(std::string_view bytes) const;

  private:
    std::filesystem::path m_link;
    int m_other = -1;
    int m_device = -1;
    Recorder m_received;
    std::jthread m_thread;
};

}  // namespace simulation
