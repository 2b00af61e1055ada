#pragma once

#include "libraries/http/src/RequestReader.h"

#include <string>

/**
 * The result of reading a request that comes in pieces of this size: its text, or the status with which it is
 * refused; empty when it is incomplete.
 */
inline std::string Understood(std::string_view bytes, std::size_t piece, const hv::internal::Limits& limits) {
    using State = hv::internal::RequestReader::State;
    HttpRequest request;
    hv::internal::RequestReader reader(request, limits);
    State state = State::NeedMore;
    std::string kept;
    while (state == State::NeedMore && !bytes.empty()) {
        kept.append(bytes.substr(0, piece));
        bytes.remove_prefix(std::min(piece, bytes.size()));
        std::string_view input = kept;
        do {
            state = reader.Put(input);
        } while (state == State::Header);
        kept.erase(0, kept.size() - input.size());
    }
    std::string text = request.path + "\n" + request.body;
    for (const auto& [name, value] : request.headers) {
        text.append("\n").append(name).append(":").append(value);
    }
    return state == State::Failed ? std::to_string(reader.FailStatus()) : state == State::Done ? text : "";
}
