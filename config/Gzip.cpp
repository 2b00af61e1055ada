#include "config/Gzip.h"

#include <new>
#include <stdexcept>

#include <zlib.h>

namespace {

// On layouts, 4 compresses as well as the default, 6, in a fraction of the time.
constexpr int kLevel = 4;
constexpr int kGzipHeader = 16;  // added to the bits of the window
constexpr int kMemoryLevel = 8;  // zlib's default

// A longer run of letters and digits than any word has: a picture. Only the choice of its bits makes it
// shorter; a search for repetitions takes four times as long and finds nothing.
constexpr std::size_t kPicture = 4096;
constexpr std::size_t kForEachStretch = 64;  // bytes by which a text may grow at each cut

bool IsBase64(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/' || c == '=';
}

/** The first picture in a text; an empty piece at the end when there is none. */
std::string_view FindPicture(std::string_view text) {
    std::size_t begin = 0;
    for (std::size_t end = 0; end <= text.size(); ++end) {
        if (end < text.size() && IsBase64(text[end])) {
            continue;
        }
        if (end - begin >= kPicture) {
            return text.substr(begin, end - begin);
        }
        begin = end + 1;
    }
    return text.substr(text.size());
}

void Deflate(z_stream& stream, std::string_view text, int strategy) {
    deflateParams(&stream, kLevel, strategy);
    stream.next_in = reinterpret_cast<const Bytef*>(text.data());
    stream.avail_in = static_cast<uInt>(text.size());
    deflate(&stream, Z_NO_FLUSH);
}

}  // namespace

std::string Gzip(std::initializer_list<std::string_view> texts) {
    z_stream stream{};
    if (deflateInit2(&stream, kLevel, Z_DEFLATED, MAX_WBITS + kGzipHeader, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
    const struct SEnd {
        z_stream& stream;
        ~SEnd() { deflateEnd(&stream); }
    } end{stream};
    std::size_t size = 0;
    std::size_t stretches = 0;
    for (const std::string_view text : texts) {
        size += text.size();
        stretches += 2 * (text.size() / kPicture + 1);
    }
    // The bound holds for texts that are passed at once; for texts in pieces, each piece adds a few bytes.
    std::string packed(deflateBound(&stream, static_cast<uLong>(size)) + kForEachStretch * stretches, '\0');
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    for (std::string_view text : texts) {
        while (!text.empty()) {
            const std::string_view picture = FindPicture(text);
            const auto before = static_cast<std::size_t>(picture.data() - text.data());
            Deflate(stream, text.substr(0, before), Z_DEFAULT_STRATEGY);
            Deflate(stream, picture, Z_RLE);
            text.remove_prefix(before + picture.size());
        }
    }
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) {
        throw std::length_error("a text is too long to be compressed");
    }
    packed.resize(stream.total_out);
    packed.shrink_to_fit();
    return packed;
}
