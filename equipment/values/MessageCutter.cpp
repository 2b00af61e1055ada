#include "equipment/values/MessageCutter.h"

#include <algorithm>

bool CMessageCutter::Add(std::string_view bytes, const Take& take) {
    switch (m_framing.kind) {
        case SFraming::EnKind::Terminator:
            return AddTerminated(bytes, take);
        case SFraming::EnKind::Length:
            AddOfLength(bytes, take);
            return false;
        case SFraming::EnKind::Silence:
            break;
    }
    return Hold(bytes, kLongestMessage);
}

void CMessageCutter::EndBySilence(const Take& take) {
    if (!m_isDropping && !m_held.empty()) {
        take(m_held);
    }
    m_held.clear();
    m_isDropping = false;
}

bool CMessageCutter::AddTerminated(std::string_view bytes, const Take& take) {
    const std::size_t terminator = m_framing.terminator.size();
    bool isTooLong = false;
    while (!bytes.empty()) {
        const std::size_t end = EndOfTerminator(bytes);
        if (end == std::string_view::npos) {
            return Hold(bytes, kLongestMessage + terminator - 1) || isTooLong;
        }
        const std::string_view part = bytes.substr(0, end);
        bytes.remove_prefix(end);
        const bool fits = m_held.size() + part.size() <= kLongestMessage + terminator;
        isTooLong = isTooLong || (!m_isDropping && !fits);
        if (!m_isDropping && fits) {
            std::string_view message = part;
            if (!m_held.empty()) {
                message = m_held.append(part);
            }
            message.remove_suffix(terminator);
            if (!message.empty()) {
                take(message);
            }
        }
        m_held.clear();
        m_isDropping = false;
    }
    return isTooLong;
}

/** The place behind the first terminator, which may have begun in what is held. */
std::size_t CMessageCutter::EndOfTerminator(std::string_view bytes) const {
    const std::size_t size = m_framing.terminator.size();
    const std::size_t before = std::min(size - 1, m_held.size());
    if (before > 0) {
        std::string seam = m_held.substr(m_held.size() - before);
        seam.append(bytes.substr(0, size - 1));
        const std::size_t place = seam.find(m_framing.terminator);
        if (place != std::string::npos) {
            return place + size - before;
        }
    }
    const std::size_t place = bytes.find(m_framing.terminator);
    return place == std::string_view::npos ? place : place + size;
}

/** Keeps bytes of a message that goes on. @return whether the message became too long by them */
bool CMessageCutter::Hold(std::string_view bytes, std::size_t most) {
    const bool wasDropping = m_isDropping;
    m_isDropping = wasDropping || m_held.size() + bytes.size() > most;
    if (!m_isDropping) {
        m_held.append(bytes);
        return false;
    }
    // A terminator may have begun.
    const std::size_t tail = most - kLongestMessage;
    m_held.append(bytes.substr(bytes.size() - std::min(tail, bytes.size())));
    m_held.erase(0, m_held.size() - std::min(tail, m_held.size()));
    return !wasDropping;
}

void CMessageCutter::AddOfLength(std::string_view bytes, const Take& take) {
    while (!bytes.empty()) {
        if (m_held.empty() && bytes.size() >= m_framing.length) {
            take(bytes.substr(0, m_framing.length));
            bytes.remove_prefix(m_framing.length);
            continue;
        }
        const std::size_t part = std::min(m_framing.length - m_held.size(), bytes.size());
        m_held.append(bytes.substr(0, part));
        bytes.remove_prefix(part);
        if (m_held.size() == m_framing.length) {
            take(m_held);
            m_held.clear();
        }
    }
}
