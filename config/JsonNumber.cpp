#include "config/JsonNumber.h"

#include <cmath>

namespace {

constexpr double kTwoTo32 = 4294967296.0;

std::int32_t Low32Bits(std::uint64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

}  // namespace

std::int32_t JsonToInt32(const nlohmann::json& value) {
    switch (value.type()) {
        case nlohmann::json::value_t::boolean:
            return value.get<bool>() ? 1 : 0;
        case nlohmann::json::value_t::number_unsigned:
            return Low32Bits(value.get<std::uint64_t>());
        case nlohmann::json::value_t::number_integer:
            return Low32Bits(static_cast<std::uint64_t>(value.get<std::int64_t>()));
        case nlohmann::json::value_t::number_float: {
            // The remainder is exact, so that a float and the integer of the same value give the same bits.
            const double remainder = std::fmod(std::trunc(value.get<double>()), kTwoTo32);
            return std::isfinite(remainder)
                       ? Low32Bits(static_cast<std::uint64_t>(static_cast<std::int64_t>(remainder)))
                       : 0;
        }
        default:
            return value.get<std::int32_t>();  // raises the type error of the JSON library
    }
}
