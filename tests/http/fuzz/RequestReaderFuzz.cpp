// Any bytes, in any pieces: the reader ends, and understands the same in one piece as byte by byte.
#include "libraries/http/src/RequestReader.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using hv::internal::RequestReader;

static std::string Understood(std::string_view bytes, std::size_t piece) {
    static const hv::internal::Limits limits{
        .headerBytes = 512, .bodyBytes = 4096, .chunkOverheadBytes = 256};
    HttpRequest request;
    RequestReader reader(request, limits);
    auto state = RequestReader::State::NeedMore;
    std::string kept;
    while (state == RequestReader::State::NeedMore && !bytes.empty()) {
        kept.append(bytes.substr(0, piece));
        bytes.remove_prefix(std::min(piece, bytes.size()));
        std::string_view input = kept;
        do {
            state = reader.Put(input);
        } while (state == RequestReader::State::Header);
        kept.erase(0, kept.size() - input.size());
    }
    std::string text = request.path + "\n" + request.body;
    for (const auto& [name, value] : request.headers) {
        text.append("\n").append(name).append(":").append(value);
    }
    return state == RequestReader::State::Done ? text : "";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + std::min<std::size_t>(size, 300));
    if (Understood(bytes, bytes.size()) != Understood(bytes, 1)) {
        std::abort();
    }
    return 0;
}
