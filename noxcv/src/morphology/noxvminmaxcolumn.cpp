// Minimum and maximum over windows of rows and columns: the row routine runs once on each source row, and its results
// are joined column by column as whole rows.
//
// Windows of n rows are joined by blocks of n + 1 outputs (M. van Herk, 1992): the rows of the first window become the
// winners of themselves and all rows of that window behind them; the rows behind the window join a running winner, and
// each output is the winner of the two. So a row costs three steps, whatever n. Windows of 3 and 5 rows are joined
// directly, two outputs at a time.
//
// Minima and maxima of bytes do not mind an order, so columns go first there unless the images overlap: the rows are
// joined where they lie, into a line that is still in the nearest cache when the row routine makes an output row of it.
//
// Of large images, the columns ask on their way for the rows that the row routine reads and writes next.
#include <algorithm>
#include <cfloat>
#include <cstring>
#include <type_traits>

#include "ahead.h"
#include "noxvminmax.h"
#include "owncopybytes.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// One call: where rows come from, pass through and go to. A source row is filtered when it is first asked for, before
/// any output row that lies at its place is written, so dst may be src.
template <class Op, class T>
struct Columns {
    Rows<const T> src;
    Rows<T> dst;
    NoxiSize roi;
    std::ptrdiff_t count; ///< elements of a row
    int windowWidth, anchorX;
    RowRoutine<T> row;
    T **ring;
    int slots;
    bool asks;        ///< for the next rows of both images
    int filtered = 0; ///< source rows done so far

    int nextSlot = 0; ///< the ring's place for the next one

    /// The ring's place for row y.
    T *slot(int y) const { return ring[y % slots]; }
    /// The same for row y + i, i below twice the ring's length, when y lies at place `first`.
    T *slotBehind(int first, int i) const {
        i += first;
        i -= i >= slots ? slots : 0;
        return ring[i >= slots ? i - slots : i];
    }
    /// Filters source rows up to y.
    void fetch(int y) {
        for (; filtered <= y; ++filtered) {
            row(src[filtered], ring[nextSlot], roi.width, windowWidth, anchorX);
            nextSlot = nextSlot + 1 == slots ? 0 : nextSlot + 1;
        }
    }
    /// The source rows that are filtered next, and the results from row y on.
    template <int rows>
    AheadRows<rows> ahead(int y) const {
        return asks ? AheadRows<rows>(src, filtered, dst, y) : AheadRows<rows>();
    }
    void copy(int y, const T *from) const { std::memcpy(dst[y], from, static_cast<std::size_t>(count) * sizeof(T)); }
    void join(const T *a, const T *b, int y) const {
        asking(ahead<1>(y + 1), [&](const auto &next) {
            NOX_ON_TIER_FOR(tierBytes<T>(count), joinRows<Op, T>(a, b, dst[y], count, next));
        });
    }

    /// The outputs above the first one whose window begins in the image: each takes one more row into the one before.
    void top(int windowHeight, int anchor) {
        for (int y = 0; y < std::min(anchor, roi.height); ++y) {
            const int last = y + windowHeight - 1 - anchor;
            if (y == 0) {
                fetch(std::min(last, roi.height - 1));
                copy(0, slot(0));
                for (int i = 1; i < filtered; ++i)
                    join(dst[0], slot(i), 0);
            } else if (last < roi.height) {
                fetch(last);
                join(dst[y - 1], slot(last), y);
            } else {
                copy(y, dst[y - 1]);
            }
        }
    }

    /// The outputs whose windows begin in rows b to b + n.
    void block(int b, int n, int anchor) {
        const int behind = b + n; // the first row behind the block's first window
        const int last = std::min(behind, roi.height) - 1;
        fetch(last);
        if (last > b + 1)
            NOX_ON_TIER(suffixRows<Op, T>(ring, slots, last % slots, last - b, count));
        if (last > b)
            join(slot(b), slot(b + 1), b + anchor);
        else
            copy(b + anchor, slot(b));
        const int first = b % slots;
        T *const running = slotBehind(first, n);
        for (int i = 1; i <= n && b + anchor + i < roi.height; ++i) {
            const int y = b + anchor + i, next = behind + i - 1;
            const T *suffix = slotBehind(first, i);
            if (next < roi.height)
                fetch(next);
            if (behind >= roi.height)
                copy(y, suffix);
            else if (i == n && next < roi.height && next > behind)
                join(running, slotBehind(first, n + i - 1), y);
            else if (i == n)
                copy(y, running);
            else if (i == 1 || next >= roi.height)
                join(i == 1 ? suffix : running, i == 1 ? running : suffix, y);
            else
                asking(ahead<1>(y + 1), [&](const auto &later) {
                    NOX_ON_TIER_FOR(tierBytes<T>(count),
                                    joinPrefix<Op, T>(running, running, slotBehind(first, n + i - 1), suffix, dst[y],
                                                      count, later));
                });
        }
    }

    /// Windows of `taps` rows from output y on; the last ones are cut at the end of the image.
    template <int taps>
    void direct(int anchor) {
        int y = anchor;
        for (; y - anchor + taps < roi.height; y += 2) {
            T *rows[taps + 1];
            fetch(y - anchor + taps);
            // The ring holds these rows and no others, so the first one lies where the next one will.
            for (int i = 0; i <= taps; ++i)
                rows[i] = slotBehind(nextSlot, i);
            asking(ahead<2>(y + 2), [&](const auto &later) {
                NOX_ON_TIER_FOR(tierBytes<T>(count), joinTwo<Op, T, taps>(rows, dst[y], dst[y + 1], count, later));
            });
        }
        fetch(roi.height - 1);
        for (; y < roi.height; ++y) {
            const T *rows[taps];
            int n = 0;
            for (int i = y - anchor; i < std::min(y - anchor + taps, roi.height); ++i)
                rows[n++] = slot(i);
            if (n == 1)
                copy(y, rows[0]);
            else
                NOX_ON_TIER_FOR(tierBytes<T>(count), joinMany<Op, T>(rows, n, dst[y], count));
        }
    }
};

template <class Op, class T>
Columns<Op, T> columnsOf(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels, int windowWidth,
                         int windowHeight, int anchorX, RowRoutine<T> row, T **rows) {
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(roi.width) * channels;
    const long long bytes = 2LL * static_cast<int>(sizeof(T)) * count * roi.height;
    return {{src, srcStep},   {dst, dstStep},     roi, count, windowWidth, anchorX, row, rows,
            windowHeight + 1, leavesCaches(bytes)};
}

/// Rows alone. A row goes straight to its place, unless that is where it comes from.
template <class Op, class T>
void rowsAlone(Columns<Op, T> columns) {
    for (int y = 0; y < columns.roi.height; ++y) {
        const T *const from = columns.src[y];
        T *const to = columns.dst[y];
        const bool inPlace = to < from + columns.count && from < to + columns.count;
        columns.row(from, inPlace ? columns.ring[0] : to, columns.roi.width, columns.windowWidth, columns.anchorX);
        if (inPlace)
            columns.copy(y, columns.ring[0]);
    }
}

/// Columns before rows. A window is cut at the top and bottom of the image to the rows that are there.
template <class Op>
class ColumnsFirst {
public:
    ColumnsFirst(const Columns<Op, Nox8u> &call, int windowHeight, int anchor)
        : call_(call), n_(windowHeight), anchor_(anchor), lines_{call.ring[0], call.ring[1] - call.ring[0]},
          asks_(leavesCaches(1LL * call.count * height(), aheadFrom)) {}

    void run() {
        if (n_ > 2 && n_ <= most)
            fours();
        else if (n_ == 2)
            singles(0, height());
        else
            for (long long y = 0; y < height(); y += n_)
                block(static_cast<int>(y));
    }

private:
    /// The highest window whose outputs are joined four at a time, from n + 3 rows that the nearest cache should hold.
    static constexpr int most = 16;

    /// Asking pays in images so many times as large as those that leave the nearest caches. Here columns read the image
    /// itself, in an order that hardware foresees, and smaller images are slower by a tenth with it.
    static constexpr int aheadFrom = 4;

    int bytes() const { return tierBytes<Nox8u>(call_.count); }
    int height() const { return call_.roi.height; }
    int rowIn(long long y) const { return static_cast<int>(std::clamp<long long>(y, 0, height() - 1)); }
    /// Where the columns of output row y go: with windows one pixel wide that is the output.
    Nox8u *lineFor(int y, int i) const { return call_.windowWidth == 1 ? call_.dst[y] : lines_[i]; }
    void finish(const Nox8u *line, int y) const {
        if (call_.windowWidth > 1)
            call_.row(line, call_.dst[y], call_.roi.width, call_.windowWidth, call_.anchorX);
    }

    /// What comes after row y - 1 of the image: source rows, and the output rows that are finished after the columns,
    /// or with windows one pixel wide are joined next.
    template <int rows>
    AheadRows<rows> ahead(long long y, int joined) const {
        return asks_ ? AheadRows<rows>(call_.src, static_cast<int>(y), call_.dst,
                                       call_.windowWidth == 1 ? joined + rows : joined)
                     : AheadRows<rows>();
    }

    /// Output rows y to end, one at a time.
    void singles(int y, int end) const {
        for (; y < end; ++y) {
            const Nox8u *rows[most];
            int n = 0;
            for (int i = rowIn(y - anchor_); i <= rowIn(y - anchor_ + n_ - 1); ++i)
                rows[n++] = call_.src[i];
            Nox8u *const line = lineFor(y, 0);
            if (n > 1)
                NOX_ON_TIER_FOR(bytes(), joinMany<Op, Nox8u>(rows, n, line, call_.count));
            else
                copyBytes(line, rows[0], static_cast<std::size_t>(call_.count));
            finish(line, y);
        }
    }
    void fours() const {
        int y = std::min(anchor_, height());
        singles(0, y);
        for (; y <= height() - n_ - 3 + anchor_; y += 4) {
            const Nox8u *const from = call_.src[y - anchor_];
            Nox8u *const to = lineFor(y, 0);
            const std::ptrdiff_t toStep = call_.windowWidth == 1 ? call_.dst.step : lines_.step;
            asking(ahead<4>(0LL + y - anchor_ + n_ + 3, y), [&](const auto &next) {
                if (n_ == 3)
                    NOX_ON_TIER_FOR(bytes(), joinFour<Op, 3>(from, call_.src.step, n_, to, toStep, call_.count, next));
                else if (n_ == 5)
                    NOX_ON_TIER_FOR(bytes(), joinFour<Op, 5>(from, call_.src.step, n_, to, toStep, call_.count, next));
                else
                    NOX_ON_TIER_FOR(bytes(), joinFour<Op, 0>(from, call_.src.step, n_, to, toStep, call_.count, next));
            });
            for (int i = 0; i < 4; ++i)
                finish(lines_[i], y + i);
        }
        singles(y, height());
    }

    /// Output rows top to top + n - 1. Their windows all hold the last row of the first one's window.
    void block(int top) const {
        const int first = rowIn(top - anchor_), last = rowIn(0LL + top - anchor_ + n_ - 1), rows = last - first + 1;
        // The winners of rows first to last - 1 and those behind them lie in lines 0 and on; then two lines more.
        Nox8u *const running = lines_[n_ - 1], *const line = lines_[n_];
        if (rows > 1)
            NOX_ON_TIER_FOR(
                bytes(), suffixesOf<Op>(call_.src[first], call_.src.step, rows, lines_[0], lines_.step, call_.count));
        const Nox8u *before = nullptr;
        for (int y = top; y < height() && y - top < n_; ++y) {
            const int begin = rowIn(y - anchor_);
            const long long next = 0LL + y - anchor_ + n_ - 1;
            const Nox8u *const suffix = begin < last ? lines_[begin - first] : call_.src[last];
            Nox8u *const to = call_.windowWidth == 1 ? call_.dst[y] : line;
            if (next > last && next < height() && before == nullptr) {
                before = call_.src[next];
                NOX_ON_TIER_FOR(bytes(), joinRows<Op, Nox8u>(before, suffix, to, call_.count));
            } else if (next > last && next < height()) {
                asking(ahead<1>(next + 1, y), [&](const auto &later) {
                    NOX_ON_TIER_FOR(bytes(), joinPrefix<Op, Nox8u>(before, running, call_.src[next], suffix, to,
                                                                   call_.count, later));
                });
                before = running;
            } else if (before != nullptr) {
                NOX_ON_TIER_FOR(bytes(), joinRows<Op, Nox8u>(before, suffix, to, call_.count));
            } else if (call_.windowWidth == 1) {
                copyBytes(to, suffix, static_cast<std::size_t>(call_.count));
            } else {
                finish(suffix, y);
                continue;
            }
            finish(to, y);
        }
    }

    const Columns<Op, Nox8u> &call_;
    const int n_, anchor_;
    const Rows<Nox8u> lines_; ///< n + 1 of them
    const bool asks_;
};

/// Whether one image ends before the other begins.
template <class T>
bool areApart(Rows<const T> src, Rows<T> dst, NoxiSize roi, std::ptrdiff_t count) {
    return dst[roi.height - 1] + count <= src[0] || src[roi.height - 1] + count <= dst[0];
}

/// Windows of `taps` rows are joined directly, others by blocks.
template <class Op, class T, int taps>
void filterColumns(Columns<Op, T> columns, int windowHeight, int anchor) {
    if (windowHeight == 1) {
        rowsAlone(columns);
        return;
    }
    if constexpr (std::is_same_v<T, Nox8u>)
        if (areApart(columns.src, columns.dst, columns.roi, columns.count)) {
            ColumnsFirst<Op>(columns, windowHeight, anchor).run();
            return;
        }
    columns.top(windowHeight, anchor);
    if constexpr (taps > 0)
        if (windowHeight == taps) {
            columns.template direct<taps>(anchor);
            return;
        }
    for (int b = 0; b + anchor < columns.roi.height; b += windowHeight + 1)
        columns.block(b, windowHeight, anchor);
}

} // namespace

#define NOX_COLUMN_ARGUMENTS(TYPE)                                                                                     \
    (const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int channels, int windowWidth,                \
     int windowHeight, int anchorX, int anchorY, RowRoutine<TYPE> row, TYPE **rows)
#define NOX_COLUMNS(OP, TYPE)                                                                                          \
    columnsOf<OP, TYPE>(src, srcStep, dst, dstStep, roi, channels, windowWidth, windowHeight, anchorX, row, rows)
#define NOX_COLUMN_ROUTINES(OP, TYPE, COLUMN01, COLUMN03, COLUMN05, COLUMNVH)                                          \
    void COLUMN01 NOX_COLUMN_ARGUMENTS(TYPE) {                                                                         \
        filterColumns<OP, TYPE, 0>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY);                                      \
    }                                                                                                                  \
    void COLUMN03 NOX_COLUMN_ARGUMENTS(TYPE) {                                                                         \
        filterColumns<OP, TYPE, 3>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY);                                      \
    }                                                                                                                  \
    void COLUMN05 NOX_COLUMN_ARGUMENTS(TYPE) {                                                                         \
        filterColumns<OP, TYPE, 5>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY);                                      \
    }                                                                                                                  \
    void COLUMNVH NOX_COLUMN_ARGUMENTS(TYPE) {                                                                         \
        filterColumns<OP, TYPE, 0>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY);                                      \
    }

NOX_COLUMN_ROUTINES(Smallest, Nox8u, ownFilterMinColumn01_8u_C1R, ownFilterMinColumn03_8u_C1R,
                    ownFilterMinColumn05_8u_C1R, ownFilterMinColumnVH_8u_C1R)
NOX_COLUMN_ROUTINES(Largest, Nox8u, ownFilterMaxColumn01_8u_C1R, ownFilterMaxColumn03_8u_C1R,
                    ownFilterMaxColumn05_8u_C1R, ownFilterMaxColumnVH_8u_C1R)
NOX_COLUMN_ROUTINES(Smallest, Nox32f, ownFilterMinColumn01_32f_C1R, ownFilterMinColumn03_32f_C1R,
                    ownFilterMinColumn05_32f_C1R, ownFilterMinColumnVH_32f_C1R)
NOX_COLUMN_ROUTINES(Largest, Nox32f, ownFilterMaxColumn01_32f_C1R, ownFilterMaxColumn03_32f_C1R,
                    ownFilterMaxColumn05_32f_C1R, ownFilterMaxColumnVH_32f_C1R)

#define NOX_COLUMN_TABLE(OP, TAG)                                                                                      \
    {                                                                                                                  \
        ownFilter##OP##ColumnVH_##TAG##R, ownFilter##OP##Column01_##TAG##R, ownFilter##OP##ColumnVH_##TAG##R,          \
            ownFilter##OP##Column03_##TAG##R, ownFilter##OP##ColumnVH_##TAG##R, ownFilter##OP##Column05_##TAG##R,      \
            ownFilter##OP##ColumnVH_##TAG##R, ownFilter##OP##ColumnVH_##TAG##R                                         \
    }
const ColumnRoutine<Nox8u> owntablFilterMinColumn_8u_C1[8] = NOX_COLUMN_TABLE(Min, 8u_C1);
const ColumnRoutine<Nox8u> owntablFilterMaxColumn_8u_C1[8] = NOX_COLUMN_TABLE(Max, 8u_C1);
const ColumnRoutine<Nox32f> owntablFilterMinColumn_32f_C1[8] = NOX_COLUMN_TABLE(Min, 32f_C1);
const ColumnRoutine<Nox32f> owntablFilterMaxColumn_32f_C1[8] = NOX_COLUMN_TABLE(Max, 32f_C1);
