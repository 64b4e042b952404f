// Ascending sort of a vector in place: a quicksort with its own stack and a selection sort for short ranges.
#include <algorithm>
#include <bit>
#include <utility>

#include "checks.h"
#include "noxcv/primitives.h"

using namespace nox;

namespace {

/// An element at any address.
struct [[gnu::packed, gnu::may_alias]] Number {
    Nox64f value;

    friend bool operator<(const Number &a, const Number &b) { return a.value < b.value; }
};

void exchange(Number &a, Number &b) {
    const Nox64f value = a.value;
    a.value = b.value;
    b.value = value;
}

/// Elements from lo to hi, both included.
struct Range {
    Number *lo, *hi;
    int splits; ///< partitions that may still follow before the range counts as adverse

    std::ptrdiff_t count() const { return hi - lo + 1; }
};

constexpr int shortest = 10; ///< fewer elements are sorted by selection

void order(Number &low, Number &high) {
    if (low.value > high.value)
        exchange(low, high);
}

/// Moves the first of the greatest elements to the end, again and again.
void sortBySelection(Number *lo, Number *hi) {
    for (; hi > lo; --hi) {
        Number *greatest = lo;
        for (Number *p = lo + 1; p <= hi; ++p)
            if (p->value > greatest->value)
                greatest = p;
        exchange(*greatest, *hi);
    }
}

/// Divides a range in elements up to a pivot and elements above it; those equal to the pivot in the middle belong to
/// neither part. Either part may be empty.
std::pair<Range, Range> divide(const Range &range) {
    Number *middle = range.lo + range.count() / 2;
    order(range.lo[1], range.lo[0]);
    order(*range.lo, *middle);
    order(*middle, *range.hi);
    order(*range.lo, *middle);
    const Nox64f pivot = middle->value;
    Number *i = range.lo + 1, *j = range.hi;
    for (;;) {
        while (i < j && i->value <= pivot)
            ++i;
        while (i < j && !(j->value <= pivot))
            --j;
        if (i >= j)
            break;
        exchange(*i, *j);
    }
    Number *end = i - 1;
    while (end >= range.lo && end->value == pivot)
        --end;
    return {{range.lo, end, range.splits - 1}, {j, range.hi, range.splits - 1}};
}

void sortRange(Range range) {
    // The larger part is always the one that waits, so each waiting range is at most half of the one before it.
    Range waiting[32];
    int count = 0;
    for (;;) {
        if (range.count() < shortest) {
            sortBySelection(range.lo, range.hi);
        } else if (range.splits == 0) {
            std::make_heap(range.lo, range.hi + 1);
            std::sort_heap(range.lo, range.hi + 1);
        } else {
            auto [smaller, larger] = divide(range);
            if (smaller.count() > larger.count())
                std::swap(smaller, larger);
            range = smaller.count() > 0 ? smaller : larger;
            if (smaller.count() > 0)
                waiting[count++] = larger;
            continue;
        }
        if (count == 0)
            return;
        range = waiting[--count];
    }
}

} // namespace

NoxStatus noxsSortAscend_64f_I(Nox64f *srcDst, int length) {
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    if (status == noxStsNoError) {
        auto *const first = reinterpret_cast<Number *>(srcDst);
        sortRange({first, first + length - 1, 2 * static_cast<int>(std::bit_width(static_cast<unsigned>(length)))});
    }
    return status;
}
