// The names of generations, and which generations stay.

#include "versions/Generations.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <set>

using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::year_month_day;

namespace {

constexpr std::ptrdiff_t kLatest = 12;
constexpr std::size_t kLatestDays = 12;
constexpr std::size_t kLatestMonths = 6;
constexpr std::size_t kNameLength = 19;  // of "2026-11-22_14-05-33"

/** The number in a part of a text; -1 when there are characters other than digits. */
int NumberAt(const std::string& text, std::size_t place, std::size_t length) {
    const char* const end = text.data() + place + length;
    int number = -1;
    const auto result = std::from_chars(text.data() + place, end, number);
    return result.ec == std::errc() && result.ptr == end ? number : -1;
}

/** Adds the first time of each of the latest periods, days or months. */
template <typename PeriodOf>
void KeepFirsts(const std::vector<local_seconds>& times, std::size_t periods, PeriodOf periodOf,
                std::set<local_seconds>& kept) {
    for (auto time = times.rbegin(); time != times.rend() && periods > 0; ++time) {
        const auto before = std::next(time);
        if (before == times.rend() || periodOf(*before) != periodOf(*time)) {
            kept.insert(*time);
            --periods;
        }
    }
}

}  // namespace

std::string GenerationName(local_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 80> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02u_%02d-%02d-%02d",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

std::optional<local_seconds> GenerationTime(const std::string& name) {
    if (name.size() != kNameLength) {
        return std::nullopt;
    }
    const int year = NumberAt(name, 0, 4);
    const int month = NumberAt(name, 5, 2);
    const int day = NumberAt(name, 8, 2);
    if (year < 0 || month < 0 || day < 0) {
        return std::nullopt;
    }
    const year_month_day date(std::chrono::year{year}, std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) {
        return std::nullopt;
    }
    const local_seconds time = local_days(date) + std::chrono::hours(NumberAt(name, 11, 2)) +
                               std::chrono::minutes(NumberAt(name, 14, 2)) +
                               std::chrono::seconds(NumberAt(name, 17, 2));
    return GenerationName(time) == name ? std::optional(time) : std::nullopt;
}

std::vector<local_seconds> SuperfluousGenerations(const std::vector<local_seconds>& times) {
    const auto dayOf = [](local_seconds time) { return std::chrono::floor<std::chrono::days>(time); };
    const auto monthOf = [&dayOf](local_seconds time) {
        const year_month_day date(dayOf(time));
        return date.year() / date.month();
    };
    const auto count = std::min(kLatest, static_cast<std::ptrdiff_t>(times.size()));
    std::set<local_seconds> kept(times.end() - count, times.end());
    KeepFirsts(times, kLatestDays, dayOf, kept);
    KeepFirsts(times, kLatestMonths, monthOf, kept);
    std::vector<local_seconds> superfluous;
    std::copy_if(times.begin(), times.end(), std::back_inserter(superfluous),
                 [&kept](local_seconds time) { return !kept.contains(time); });
    return superfluous;
}
