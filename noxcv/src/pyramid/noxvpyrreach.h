// Which samples of a line reach a place of the line that is `rate` times as long, and with what weight: what both
// passes of an up layer go by.
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "frame/noxvworkbuffer.h"
#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// Where sample i lies: at a place, or between two.
struct Sample {
    int whole;
    Nox32f fraction;

    Sample(int i, Nox32f rate) {
        const Nox32f p = static_cast<Nox32f>(i) * rate;
        whole = static_cast<int>(p + 100.0F) - 100;
        fraction = p - static_cast<Nox32f>(whole);
    }
    bool isBetween() const { return std::fabs(fraction) > FLT_MIN; }
};

/// The kernel as the spread sees it, for lines of up to so many places.
template <class Tap>
class Kernel {
public:
    Kernel(const Tap *taps, int size, Nox32f rate, int places)
        : size(size), taps_(taps), rate_(rate), coarseness_(places >> 20) {}

    const int size;

    int half() const { return size / 2; }
    Nox32f rate() const { return rate_; }
    /// Samples before the first and behind the last one that are looked at.
    int reach() const { return static_cast<int>(0.5F + static_cast<Nox32f>(half()) / rate_); }
    /// At most as many samples reach one place.
    int overlap() const { return static_cast<int>(static_cast<Nox32f>(2 * half() + coarseness_) / rate_) + 2; }
    /// The first and the last place that a sample reaches, counted from its own.
    int firstPlace(const Sample &s) const { return s.isBetween() ? -half() + 1 : -half() + cut(); }
    int lastPlace(const Sample &s) const { return s.isBetween() ? half() : half() - cut(); }
    /// The weight there.
    Nox32f weight(const Sample &s, int t) const {
        if (!s.isBetween())
            return static_cast<Nox32f>(tap(t));
        return static_cast<Nox32f>(tap(t - 1)) * s.fraction + static_cast<Nox32f>(tap(t)) * (1.0F - s.fraction);
    }
    /// Samples around a place: none outside reaches it.
    int firstNear(int place) const {
        return static_cast<int>(std::floor(static_cast<Nox64f>(place - half() - 1) / rate_)) - margin();
    }
    int lastNear(int place) const {
        return static_cast<int>(std::ceil(static_cast<Nox64f>(place + half() + 1) / rate_)) + margin();
    }
    int margin() const { return 1 + coarseness_; }

private:
    Tap tap(int t) const { return taps_[t + half()]; }
    int cut() const { return taps_[0] == Tap(0) ? 1 : 0; }

    const Tap *taps_;
    Nox32f rate_;
    int coarseness_; ///< in very long lines, by how many places the positions in single precision may be off
};

/// A sample that reaches a place, with its weight there.
struct Reach {
    int sample : 31;
    bool between : 1;
    Nox32f weight;
};

/// The samples that reach each of some places in a row, in ascending order.
template <class Tap>
class Reaches {
public:
    Reaches() = default;
    /// Of `capacity` places at most, for a line of so many samples with half a kernel more on both sides.
    Reaches(const Kernel<Tap> &kernel, int capacity, int samples, WorkBuffer &work)
        : kernel_(&kernel), depth_(kernel.overlap()), capacity_(capacity), first_(-kernel.reach()),
          last_(samples + std::min(kernel.reach(), kernel.half() - 1)), all_(work.take<Reach>(1LL * depth_ * capacity)),
          counts_(work.take<int>(capacity)) {}

    static long long bytesOfPlace(const Kernel<Tap> &kernel) {
        return kernel.overlap() * static_cast<long long>(sizeof(Reach)) + static_cast<long long>(sizeof(int));
    }

    /// Sees to it that places from first to last are listed; lists on up to the capacity, or up to place end - 1.
    void require(int first, int last, int end) {
        if (first < begin_ || last >= end_)
            list(first, first + std::min(capacity_, end - first));
    }
    const Reach *begin(int place) const { return all_ + std::ptrdiff_t{depth_} * (place - begin_); }
    const Reach *end(int place) const { return begin(place) + counts_[place - begin_]; }

private:
    void list(int begin, int end) {
        begin_ = begin;
        end_ = end;
        std::fill_n(counts_, end - begin, 0);
        const int last = std::min(kernel_->lastNear(end - 1), last_);
        for (int i = std::max(kernel_->firstNear(begin), first_); i <= last; ++i) {
            const Sample s(i, kernel_->rate());
            const int from = std::max(s.whole + kernel_->firstPlace(s), begin),
                      to = std::min(s.whole + kernel_->lastPlace(s), end - 1);
            for (int place = from; place <= to; ++place) {
                int &count = counts_[place - begin];
                all_[std::ptrdiff_t{depth_} * (place - begin) + count++] = {i, s.isBetween(),
                                                                            kernel_->weight(s, place - s.whole)};
            }
        }
    }

    const Kernel<Tap> *kernel_ = nullptr;
    int depth_ = 0, capacity_ = 0, first_ = 0, last_ = 0;
    Reach *all_ = nullptr;
    int *counts_ = nullptr;
    int begin_ = 0, end_ = 0; ///< of the places that are listed
};

/// Scale over the sum of weights, for every place; a sum too small to divide by stays as it is. Tells the least of the
/// others.
template <class Tap>
Nox32f placeScales(const Kernel<Tap> &kernel, Nox32f *scales, int places, Nox32f scale, Nox8u *scratch,
                   long long bytes) {
    WorkBuffer work(scratch, 1);
    const auto capacity = static_cast<int>(std::min(bytes / Reaches<Tap>::bytesOfPlace(kernel), 1LL * places));
    Reaches<Tap> reaches(kernel, capacity, places, work);
    Nox32f least = FLT_MAX;
    for (int place = 0; place < places; ++place) {
        reaches.require(place, place, places);
        Nox32f sum = 0;
        for (const Reach *reach = reaches.begin(place); reach != reaches.end(place); ++reach)
            sum += reach->weight;
        const bool divides = std::fabs(sum) > FLT_MIN;
        least = divides ? std::min(least, sum) : least;
        scales[place] = divides ? scale / sum : sum;
    }
    return least;
}

} // namespace nox
