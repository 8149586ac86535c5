// What the programs here have in common: taking times, rows of the table that bench/run makes, and
// their end when something is wrong.
// BENCH_QUICK in the environment makes fewer runs, BENCH_RAW prints every single value.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace ferrivane::bench {

using Clock = std::chrono::steady_clock;

inline double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

template<typename Work>
double milliseconds(Work&& work) {
    const auto start = Clock::now();
    work();
    return millisecondsSince(start);
}

// Ends the program.
[[noreturn]] inline void fail(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(1);  // NOLINT(concurrency-mt-unsafe)
}

// For main: what `body` returns, or 1 after a message when it throws.
template<typename Body>
int guarded(Body&& body) {
    try {
        return body();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}

inline bool isSet(const char* variable) {
    return std::getenv(variable) != nullptr;  // NOLINT(concurrency-mt-unsafe)
}

inline bool isQuick() {
    return isSet("BENCH_QUICK");
}

inline int runs(int count) {
    return isQuick() ? std::max(5, count / 5) : count;
}

// Values that were taken in one run, in the unit of their row.
using Values = std::vector<double>;

inline double median(Values values) {
    std::ranges::sort(values);
    return values.empty() ? 0 : values[values.size() / 2];
}

// "median<tab>tail<tab>percentile"; the 99th of a hundred values or more, the 90th of ten or more.
inline std::string figure(Values values) {
    if (values.empty()) return "\t\t";
    std::ranges::sort(values);
    const int percentile = values.size() >= 100 ? 99 : values.size() >= 10 ? 90 : 0;
    const std::size_t place = values.size() * static_cast<std::size_t>(percentile) / 100;
    std::string text = std::to_string(median(values)) + "\t";
    if (percentile != 0) text += std::to_string(values[place]) + "\t" + std::to_string(percentile);
    return percentile != 0 ? text : text + "\t";
}

inline void raw(const std::string& what, const Values& values) {
    if (!isSet("BENCH_RAW")) return;
    std::fprintf(stderr, "%s:", what.c_str());
    for (const double value : values) std::fprintf(stderr, " %g", value);
    std::fprintf(stderr, "\n");
}

// `unit` is "ms", "kB" or empty for a count. A row may do without a reference.
inline void row(const std::string& section, const std::string& what, const std::string& unit,
                const Values& values, const std::string& reference = "",
                const Values& ofReference = {}, const std::string& remark = "") {
    std::printf("%s\t%s\t%s\t%s\t%s\t%s\t%s\n", section.c_str(), what.c_str(), unit.c_str(),
                figure(values).c_str(), reference.c_str(), figure(ofReference).c_str(),
                remark.c_str());
    std::fflush(stdout);
    raw(section + ", " + what, values);
    raw(section + ", " + what + ", reference " + reference, ofReference);
}

struct Compared {
    Values work;
    Values reference;
};

// Milliseconds of both, in turns, after one of each that does not count; `most` times, or until
// about `seconds` have gone. What takes less than 20 us is repeated and the mean counts.
template<typename Work, typename Reference>
Compared alternate(Work&& work, Reference&& reference, int most = 200, double seconds = 0.6) {
    const auto repeated = [](auto& piece, int times) {
        return milliseconds([&] {
                   for (int i = 0; i < times; ++i) piece();
               }) /
               times;
    };
    const auto timesFor = [&](auto& piece) {
        piece();
        constexpr double kLeast = 0.02;
        return std::clamp(static_cast<int>(kLeast / repeated(piece, 1)), 1, 10'000);
    };
    const int ofWork = timesFor(work);
    const int ofReference = timesFor(reference);
    Compared compared;
    const auto start = Clock::now();
    const double limit = 1000 * (isQuick() ? seconds / 5 : seconds);
    for (int run = 0; run < most && (run < 5 || millisecondsSince(start) < limit); ++run) {
        compared.reference.push_back(repeated(reference, ofReference));
        compared.work.push_back(repeated(work, ofWork));
    }
    return compared;
}

// Keeps a result that nobody uses.
template<typename Value>
void keep(const Value& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

}  // namespace ferrivane::bench
