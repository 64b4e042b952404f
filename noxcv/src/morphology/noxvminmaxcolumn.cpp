// Minimum and maximum over windows of rows and columns: the row routine runs once on each source row, and its results
// are joined column by column as whole rows.
//
// Windows of n rows are joined by blocks of n + 1 outputs (M. van Herk, 1992): the rows of the first window become the
// winners of themselves and all rows of that window behind them; the rows behind the window join a running winner, and
// each output is the winner of the two. So a row costs three steps, whatever n. Windows of 3 and 5 rows are joined
// directly, two outputs at a time.
#include <algorithm>
#include <cfloat>
#include <cstring>
#include <type_traits>

#include "noxvminmax.h"
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
    void copy(int y, const T *from) const { std::memcpy(dst[y], from, static_cast<std::size_t>(count) * sizeof(T)); }
    void join(const T *a, const T *b, T *out) const {
        NOX_ON_TIER_FOR(tierBytes<T>(count), joinRows<Op, T>(a, b, out, count));
    }

    /// The outputs above the first one whose window begins in the image: each takes one more row into the one before.
    void top(int windowHeight, int anchor) {
        for (int y = 0; y < std::min(anchor, roi.height); ++y) {
            const int last = y + windowHeight - 1 - anchor;
            if (y == 0) {
                fetch(std::min(last, roi.height - 1));
                copy(0, slot(0));
                for (int i = 1; i < filtered; ++i)
                    join(dst[0], slot(i), dst[0]);
            } else if (last < roi.height) {
                fetch(last);
                join(dst[y - 1], slot(last), dst[y]);
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
            join(slot(b), slot(b + 1), dst[b + anchor]);
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
                join(running, slotBehind(first, n + i - 1), dst[y]);
            else if (i == n)
                copy(y, running);
            else if (i == 1 || next >= roi.height)
                join(i == 1 ? suffix : running, i == 1 ? running : suffix, dst[y]);
            else
                NOX_ON_TIER_FOR(tierBytes<T>(count),
                                joinPrefix<Op, T>(running, slotBehind(first, n + i - 1), suffix, dst[y], count));
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
            NOX_ON_TIER_FOR(tierBytes<T>(count), joinTwo<Op, T, taps>(rows, dst[y], dst[y + 1], count));
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
    return {{src, srcStep},  {dst, dstStep}, roi, static_cast<std::ptrdiff_t>(roi.width) * channels,
            windowWidth,     anchorX,        row, rows,
            windowHeight + 1};
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

template <class Op, class T>
void anyHeight(Columns<Op, T> columns, int windowHeight, int anchor) {
    if (windowHeight == 1) {
        rowsAlone(columns);
        return;
    }
    columns.top(windowHeight, anchor);
    for (int b = 0; b + anchor < columns.roi.height; b += windowHeight + 1)
        columns.block(b, windowHeight, anchor);
}

template <class Op, class T, int taps>
void fewRows(Columns<Op, T> columns, int windowHeight, int anchor) {
    if (windowHeight != taps) {
        anyHeight(columns, windowHeight, anchor);
        return;
    }
    columns.top(taps, anchor);
    columns.template direct<taps>(anchor);
}

} // namespace

#define NOX_COLUMN_ARGUMENTS(TYPE)                                                                                     \
    (const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int channels, int windowWidth,                \
     int windowHeight, int anchorX, int anchorY, RowRoutine<TYPE> row, TYPE **rows)
#define NOX_COLUMNS(OP, TYPE)                                                                                          \
    columnsOf<OP, TYPE>(src, srcStep, dst, dstStep, roi, channels, windowWidth, windowHeight, anchorX, row, rows)
#define NOX_COLUMN_ROUTINES(OP, TYPE, COLUMN01, COLUMN03, COLUMN05, COLUMNVH)                                          \
    void COLUMN01 NOX_COLUMN_ARGUMENTS(TYPE) { anyHeight(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY); }              \
    void COLUMN03 NOX_COLUMN_ARGUMENTS(TYPE) { fewRows<OP, TYPE, 3>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY); }   \
    void COLUMN05 NOX_COLUMN_ARGUMENTS(TYPE) { fewRows<OP, TYPE, 5>(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY); }   \
    void COLUMNVH NOX_COLUMN_ARGUMENTS(TYPE) { anyHeight(NOX_COLUMNS(OP, TYPE), windowHeight, anchorY); }

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
