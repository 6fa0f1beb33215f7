#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

namespace KAV::Bench {

/// Seconds of processor time of this thread.
inline double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return values.empty() ? 0.0 : *middle;
}

/// Times of a subject and of its reference, measured alternately.
class CTurns final {
public:
    template<typename TSubject, typename TReference>
    double Run(const TSubject& subject, const TReference& reference) {
        const double start = ThreadSeconds();
        subject();
        const double between = ThreadSeconds();
        reference();
        _subject.push_back(between - start);
        _reference.push_back(ThreadSeconds() - between);
        return _subject.back();
    }
    /// Medians in seconds.
    double Subject() const { return Median(_subject); }
    double Reference() const { return Median(_reference); }

private:
    std::vector<double> _subject;
    std::vector<double> _reference;
};

} // namespace KAV::Bench
