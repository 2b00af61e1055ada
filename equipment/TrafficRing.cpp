#include "equipment/TrafficRing.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

namespace {

constexpr std::size_t kLongestText = 255;
constexpr std::chrono::milliseconds kJoinTime{20};
constexpr std::size_t kEntriesAtOnce = 500;
constexpr std::size_t kBytesAtOnce = std::size_t{256} * 1024;

/** The first characters of a text in UTF-8. */
std::string_view Cut(std::string_view text) {
    std::size_t size = std::min(text.size(), kLongestText);
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return text.substr(0, size);
}

}  // namespace

/** An entry in a chunk: this, then the four texts, then the bytes. */
struct CTrafficRing::SHead {
    std::uint64_t id;
    std::uint64_t peer;  ///< SPortPeer::number
    STrafficEntry::Time time;
    std::int32_t error;
    std::int32_t nodeId;
    std::int32_t component;
    std::uint16_t size;  ///< of the bytes
    std::array<std::uint8_t, 4> texts;
    EnSendSource source;
    bool out;
    bool isCut;
};

/** What stands before `used` changes no more, except for a last entry that nobody has read. */
struct CTrafficRing::SChunk {
    std::size_t used = 0;
    std::uint64_t firstId = 0;
    std::uint64_t entries = 0;
    std::array<char, kChunk - 3 * sizeof(std::size_t)> bytes;  // left as it is until it is used
};

STrafficShare::STrafficShare(std::size_t bytesOfAll)
    : limit(bytesOfAll),
      lastId(static_cast<std::uint64_t>(
          std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
              .count())) {}

CTrafficRing::~CTrafficRing() {
    m_share.used -= m_count * kChunk;
}

bool CTrafficRing::AddSent(std::string_view bytes, int error, const SSendOrigin* origin) {
    const SSendOrigin nobody;
    const SSendOrigin& from = origin == nullptr ? nobody : *origin;
    SHead head{};
    head.error = error;
    head.nodeId = from.nodeId;
    head.component = from.component;
    head.source = from.source;
    head.out = true;
    const CLock lock(m_mutex);
    head.time = std::chrono::system_clock::now();
    m_joinable = nullptr;
    return Append(head, {{from.trigger, from.command, from.client, {}}}, bytes);
}

bool CTrafficRing::AddReceived(const SPortPeer& peer, std::string_view bytes) {
    SHead head{};
    head.peer = peer.number;
    const CLock lock(m_mutex);
    head.time = std::chrono::system_clock::now();
    if (!peer.isDatagram && Join(peer, bytes, head.time)) {
        return true;
    }
    m_joinable = nullptr;
    if (!Append(head, {{{}, {}, {}, peer.address}}, bytes)) {
        return false;
    }
    m_joinUntil = head.time + kJoinTime;
    if (peer.isDatagram) {
        m_joinable = nullptr;
    }
    return true;
}

bool CTrafficRing::Join(const SPortPeer& peer, std::string_view bytes, STrafficEntry::Time now) {
    if (m_joinable == nullptr || now > m_joinUntil) {
        return false;
    }
    SHead head{};
    std::memcpy(&head, m_joinable, sizeof head);
    SChunk& chunk = *m_chunks.back();
    if (head.out || head.isCut || head.peer != peer.number || head.size + bytes.size() > kLongestEntry ||
        chunk.used + bytes.size() > chunk.bytes.size()) {
        return false;
    }
    std::memcpy(chunk.bytes.data() + chunk.used, bytes.data(), bytes.size());
    chunk.used += bytes.size();
    head.size = static_cast<std::uint16_t>(head.size + bytes.size());
    std::memcpy(m_joinable, &head, sizeof head);
    m_joinUntil = now + kJoinTime;
    return true;
}

bool CTrafficRing::Append(SHead& head, const std::array<std::string_view, 4>& texts, std::string_view bytes) {
    static_assert(std::is_trivially_copyable_v<SHead>);
    head.isCut = bytes.size() > kLongestEntry;
    bytes = bytes.substr(0, kLongestEntry);
    head.size = static_cast<std::uint16_t>(bytes.size());
    std::size_t size = sizeof head + bytes.size();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        head.texts.at(i) = static_cast<std::uint8_t>(Cut(texts.at(i)).size());
        size += head.texts.at(i);
    }
    head.id = ++m_share.lastId;
    char* to = Room(size, head.id);
    if (to == nullptr) {
        return false;
    }
    m_joinable = head.out ? nullptr : to;
    const auto put = [&to](const void* from, std::size_t count) {
        if (count > 0) {
            std::memcpy(to, from, count);
            to += count;
        }
    };
    put(&head, sizeof head);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        put(texts.at(i).data(), head.texts.at(i));
    }
    put(bytes.data(), bytes.size());
    return true;
}

char* CTrafficRing::Room(std::size_t size, std::uint64_t id) {
    if (m_chunks.empty() || m_chunks.back()->used + size > m_chunks.back()->bytes.size()) {
        if (m_chunks.size() == kChunksAtMost) {
            Forget();
        }
        if ((m_share.used += kChunk) > m_share.limit) {
            m_share.used -= kChunk;
            return nullptr;
        }
        try {
            m_chunks.push_back(std::make_shared_for_overwrite<SChunk>());
        } catch (const std::bad_alloc&) {
            m_share.used -= kChunk;
            return nullptr;
        }
        m_chunks.back()->firstId = id;
        NoteChunks();
    }
    SChunk& chunk = *m_chunks.back();
    char* const room = chunk.bytes.data() + chunk.used;
    chunk.used += size;
    ++chunk.entries;
    return room;
}

void CTrafficRing::NoteChunks() {
    m_count = m_chunks.size();
    if (!m_chunks.empty()) {
        m_oldest = m_chunks.front()->firstId;
    }
}

bool CTrafficRing::DropOldest() {
    const CLock lock(m_mutex);
    if (m_chunks.empty()) {
        return false;
    }
    Forget();
    return true;
}

void CTrafficRing::NoteDropped() {
    const CLock lock(m_mutex);
    ++m_dropped;
    m_lastDropped = m_share.lastId;
}

void CTrafficRing::Forget() {
    const auto chunk = std::move(m_chunks.front());
    m_chunks.pop_front();
    m_dropped += chunk->entries;
    m_lastDropped = m_chunks.empty() ? m_share.lastId.load() : m_chunks.front()->firstId - 1;
    m_joinable = m_chunks.empty() ? nullptr : m_joinable;
    NoteChunks();
    m_share.used -= kChunk;
}

CTrafficRing::SRead CTrafficRing::Read(std::uint64_t after, const Filter& keeps) {
    SRead read;
    std::vector<std::pair<std::shared_ptr<SChunk>, std::size_t>> chunks;
    chunks.reserve(kChunksAtMost);
    {
        const CLock lock(m_mutex);
        for (auto chunk = m_chunks.begin(); chunk != m_chunks.end(); ++chunk) {
            const auto next = std::next(chunk);
            if (next == m_chunks.end() || (*next)->firstId > after + 1) {
                chunks.emplace_back(*chunk, (*chunk)->used);
            }
        }
        m_joinable = nullptr;  // whoever has read an entry does not read it again
        read.isMissed = after < m_lastDropped;
        read.dropped = m_dropped;
        read.last = std::max(after, m_lastDropped);
    }
    std::size_t bytes = 0;
    for (const auto& [chunk, used] : chunks) {
        for (const char* at = chunk->bytes.data(); at < chunk->bytes.data() + used;) {
            SHead head{};
            std::memcpy(&head, at, sizeof head);
            at += sizeof head;
            STrafficEntry entry;
            const std::array<std::string*, 4> texts = {&entry.trigger, &entry.command, &entry.client,
                                                       &entry.peer};
            for (std::size_t i = 0; i < texts.size(); ++i) {
                if (head.id > after) {
                    texts.at(i)->assign(at, head.texts.at(i));
                }
                at += head.texts.at(i);
            }
            const std::string_view content(at, head.size);
            at += head.size;
            if (head.id <= after) {
                continue;
            }
            if (read.entries.size() == kEntriesAtOnce || bytes + content.size() > kBytesAtOnce) {
                return read;
            }
            read.last = head.id;
            entry.id = head.id;
            entry.time = head.time;
            entry.out = head.out;
            entry.isCut = head.isCut;
            entry.error = head.error;
            entry.source = head.source;
            entry.nodeId = head.nodeId;
            entry.component = head.component;
            if (keeps(entry)) {
                entry.bytes = content;
                bytes += content.size();
                read.entries.push_back(std::move(entry));
            }
        }
    }
    return read;
}
