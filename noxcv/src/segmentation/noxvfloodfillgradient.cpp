// Flood fill along gradients: a pixel joins when it lies within a band around a neighbour that has joined, so the band
// follows slow changes of the picture.
//
// A fill goes by spans that wait until the rows above and below them are searched for more. Spans are painted only when
// they have been visited, since neighbours compare with the unpainted values; a map of visited pixels with a border of
// visited ones stops repeats and keeps the search inside the image.
//
// The stack cannot overflow. A visited span of L pixels reaches L + 2 columns of either neighbour row, and finds spans
// at least two columns apart that begin on unvisited pixels. One of the rows holds a visited pixel among those columns,
// the one the span itself was found from. So it finds at most L + 3 spans (one more for the first span, which has no
// such pixel, rounded up), where it waited as one: with K pixels visited, at most 3 K + 1 spans wait. They hold at
// least a pixel each, so 4 (number of spans) <= 3 (number of pixels) + 1, and at 8 bytes a span 6 bytes a pixel
// suffice.
#include <cmath>
#include <cstring>
#include <type_traits>

#include "checks.h"
#include "noxvfloodfill.h"

using namespace nox;

namespace {

/// How far a pixel may lie from the one it follows.
template <class T>
struct Reach;
template <>
struct Reach<Nox8u> {
    Nox32u below, extent;

    Reach() = default;
    Reach(Nox8u minDelta, Nox8u maxDelta) : below(minDelta), extent(minDelta + maxDelta) {}
    /// Below the lower end the sum wraps and is large.
    bool holds(Nox8u n, Nox8u c) const { return n + below - c <= extent; }
};
template <>
struct Reach<Nox32f> {
    Nox32f middle, half;

    Reach() = default;
    Reach(Nox32f minDelta, Nox32f maxDelta)
        : middle((minDelta - maxDelta) * 0.5F), half((minDelta + maxDelta) * 0.5F) {}
    bool holds(Nox32f n, Nox32f c) const { return std::fabs(n + middle - c) <= half; }
};

/// The rule for a pixel that may follow another one.
template <class T, int channels>
struct Rule {
    Reach<T> reach[channels];

    bool follows(const Element<T> *pixel, const Element<T> *other) const {
        for (int c = 0; c < channels; ++c)
            if (!reach[c].holds(pixel[c], other[c]))
                return false;
        return true;
    }
};

/// One row of the image and of the map.
template <class T, int channels>
struct Line {
    Element<T> *pixels;
    Nox8u *visited;

    const Element<T> *at(int x) const { return pixels + std::ptrdiff_t(x) * channels; }
};

/// One fill: the map of visited pixels and the spans that wait.
template <class T, int channels, bool diagonal>
class GradientFill {
public:
    GradientFill(Rows<T> image, NoxiSize roi, const Rule<T, channels> &rule, const Color<T, channels> &color,
                 Nox8u *buffer)
        : image_(image), roi_(roi), rule_(rule), color_(color), map_(buffer), pitch_(std::size_t(roi.width) + 2),
          waiting_(buffer + pitch_ * (std::size_t(roi.height) + 2), roi) {
        std::memset(map_, 1, pitch_);
        for (int y = 0; y < roi.height; ++y) {
            Nox8u *row = map_ + pitch_ * (std::size_t(y) + 1);
            std::memset(row, 0, pitch_);
            row[0] = row[pitch_ - 1] = 1;
        }
        std::memset(map_ + pitch_ * (std::size_t(roi.height) + 1), 1, pitch_);
    }

    Extent run(NoxiPoint seed) {
        const Line<T, channels> line = lineOf(seed.y);
        Span first{seed.y, seed.x, seed.x + 1, 0};
        line.visited[seed.x] = 1;
        extendRight(line, first, [](int) { return false; });
        extendLeft(line, first);
        waiting_.push(first);
        Extent extent;
        while (!waiting_.empty()) {
            const Span span = waiting_.pop();
            visitRow(span, 1);
            visitRow(span, -1);
            paint<T, channels>(image_[span.y], span.left, span.end, color_);
            extent.add(span);
        }
        return extent;
    }

private:
    static constexpr int reach = diagonal ? 1 : 0;

    Line<T, channels> lineOf(int y) const { return {image_[y], map_ + pitch_ * (std::size_t(y) + 1) + 1}; }

    void extendLeft(const Line<T, channels> &line, Span &span) const {
        while (line.visited[span.left - 1] == 0 && rule_.follows(line.at(span.left - 1), line.at(span.left)))
            line.visited[--span.left] = 1;
    }
    /// A pixel may also join because otherwise(x) tells so.
    template <class Otherwise>
    void extendRight(const Line<T, channels> &line, Span &span, const Otherwise &otherwise) const {
        while (line.visited[span.end] == 0 &&
               (rule_.follows(line.at(span.end), line.at(span.end - 1)) || otherwise(span.end)))
            line.visited[span.end++] = 1;
    }

    /// Takes all runs of the next row in this direction that follow the span.
    void visitRow(const Span &span, int direction) {
        const int y = span.y + direction;
        if (span.done == direction || y < 0 || y >= roi_.height)
            return;
        const Line<T, channels> line = lineOf(y), from = lineOf(span.y);
        const auto followsSpan = [&](int x) {
            for (int other = std::max(x - reach, span.left); other <= std::min(x + reach, span.end - 1); ++other)
                if (rule_.follows(line.at(x), from.at(other)))
                    return true;
            return false;
        };
        const int end = span.end + reach;
        for (int x = span.left - reach; x < end; ++x) {
            if (line.visited[x] != 0 || !followsSpan(x))
                continue;
            Span found{y, x, x + 1, 0};
            line.visited[x] = 1;
            extendLeft(line, found);
            extendRight(line, found, followsSpan);
            // What lies below the span has been visited.
            if (std::max(found.left - reach, 0) >= span.left && std::min(found.end + reach, roi_.width) <= span.end)
                found.done = -direction;
            waiting_.push(found);
            x = found.end; // and the pixel there does not follow
        }
    }

    Rows<T> image_;
    NoxiSize roi_;
    Rule<T, channels> rule_;
    Color<T, channels> color_;
    Nox8u *map_;
    std::size_t pitch_;
    WaitingSpans waiting_;
};

long long gradientBytes(NoxiSize roi) { return (roi.width + 2LL) * (roi.height + 2LL) + stackBytes(roi); }

template <class T, int channels>
bool deltasInRange(const T *minDelta, const T *maxDelta) {
    if constexpr (std::is_floating_point_v<T>)
        for (int c = 0; c < channels; ++c) {
            const Element<T> *low = minDelta, *high = maxDelta;
            if (!(low[c] >= 0) || !(high[c] >= 0))
                return false;
        }
    return true;
}

/// Steps are measured with one channel whatever the image has.
template <class T, int channels, bool diagonal>
NoxStatus fill(NoxStatus pointers, T *image, int imageStep, NoxiSize roi, NoxiPoint seed, const T *newValue,
               const T *minDelta, const T *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer) {
    const NoxStatus status = firstFailure(
        pointers, checkSize(roi), require(gradientBytes(roi) <= INT_MAX, noxStsBadSize),
        checkStep<T>(imageStep, roi.width), checkEvenSteps<T>(imageStep),
        require(seed.x >= 0 && seed.x < roi.width && seed.y >= 0 && seed.y < roi.height, noxStsOutOfRange));
    if (status != noxStsNoError)
        return status;
    if (!deltasInRange<T, channels>(minDelta, maxDelta))
        return noxStsOutOfRange;
    const auto color = Color<T, channels>::load(newValue), low = Color<T, channels>::load(minDelta),
               high = Color<T, channels>::load(maxDelta);
    Rule<T, channels> rule;
    for (int c = 0; c < channels; ++c)
        rule.reach[c] = {low.value[c], high.value[c]};
    GradientFill<T, channels, diagonal> gradient({image, imageStep}, roi, rule, color, buffer);
    *region = regionRecord(gradient.run(seed), color);
    return noxStsNoError;
}

} // namespace

NoxStatus noxiFloodFillGetSize_Grad(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    if (status == noxStsNoError)
        *size = static_cast<int>(static_cast<unsigned>(gradientBytes(roi)));
    return status;
}

// One line per member.
#define NOX_FILL_GRAD_C1(NAME, TYPE, DIAGONAL)                                                                         \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, TYPE newValue, TYPE minDelta,             \
                   TYPE maxDelta, NoxiConnectedRegion *region, Nox8u *buffer) {                                        \
        return fill<TYPE, 1, DIAGONAL>(checkPointers(image, region, buffer), image, imageStep, roi, seed, &newValue,   \
                                       &minDelta, &maxDelta, region, buffer);                                          \
    }
#define NOX_FILL_GRAD_C3(NAME, TYPE, DIAGONAL)                                                                         \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, const TYPE *newValue,                     \
                   const TYPE *minDelta, const TYPE *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer) {           \
        return fill<TYPE, 3, DIAGONAL>(checkPointers(image, newValue, minDelta, maxDelta, region, buffer), image,      \
                                       imageStep, roi, seed, newValue, minDelta, maxDelta, region, buffer);            \
    }
NOX_FILL_GRAD_C1(noxiFloodFill_Grad4Con_8u_C1IR, Nox8u, false)
NOX_FILL_GRAD_C1(noxiFloodFill_Grad8Con_8u_C1IR, Nox8u, true)
NOX_FILL_GRAD_C1(noxiFloodFill_Grad4Con_32f_C1IR, Nox32f, false)
NOX_FILL_GRAD_C1(noxiFloodFill_Grad8Con_32f_C1IR, Nox32f, true)
NOX_FILL_GRAD_C3(noxiFloodFill_Grad4Con_8u_C3IR, Nox8u, false)
NOX_FILL_GRAD_C3(noxiFloodFill_Grad8Con_8u_C3IR, Nox8u, true)
NOX_FILL_GRAD_C3(noxiFloodFill_Grad4Con_32f_C3IR, Nox32f, false)
NOX_FILL_GRAD_C3(noxiFloodFill_Grad8Con_32f_C3IR, Nox32f, true)
