// The engine of the fixed border filters: a ring of filtered rows, as high as the window, goes down the image. Each
// step filters one row more into the ring and one window out of it, so that the rows stay in the nearest cache.
#include <algorithm>

#include "borders.h"
#include "frame/noxvworkbuffer.h"
#include "noxvfilterborder.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

/// Rows of 16 bits need no description.
struct Nothing {};
Nothing join(Nothing, Nothing) { return {}; }

constexpr int largestWindow = 5;

/// The value of a constant row: the border value times the sum of the row taps.
Nox16s constantRow(const FixedFilter<Nox8u, Nox16s> &filter) {
    int sum = 0;
    for (int j = 0; j < filter.rowTapCount; ++j)
        sum += filter.rowTaps[j];
    return saturate<Nox16s>(sum * filter.borderValue);
}
Nox32f constantRow(const FixedFilter<Nox32f, Nox32f> &filter) {
    Nox32f sum = 0;
    for (int j = 0; j < filter.rowTapCount; ++j)
        sum += filter.rowTaps[j];
    return sum * filter.borderValue;
}

/// A ring of rows of Mid, each with a description of its elements: the window's.
template <class Mid, class About, class Pixel, class RowStage>
class Ring {
public:
    Ring(Rows<const Pixel> src, NoxiSize size, const FixedFilter<Pixel, Mid> &filter, RowStage stage, Nox8u *buffer)
        : src_(src), size_(size), filter_(filter), stage_(stage), height_(filter.columnTapCount) {
        Mid *row = WorkBuffer(buffer, 32).take<Mid>(0);
        for (int j = 0; j < height_; ++j, row += ringRowLength(size.width) * (filter.rowIndex == laplacianRow ? 2 : 1))
            places_[j] = places_[j + height_] = row;
    }

    /// Moves the window down: its first row's place becomes that of its last one, which is to be made.
    void advance() { first_ = first_ + 1 < height_ ? first_ + 1 : 0; }
    /// The pixels that row y, which may lie outside the image, is made of; null for a constant row.
    const Pixel *source(int y) const {
        const bool outside = y < 0 || y >= size_.height;
        return outside && filter_.borderType == noxBorderConstant
                   ? nullptr
                   : src_[borderIndex(y, size_.height, filter_.borderType)];
    }
    /// Makes row y as the window's next, and asks for what comes after it.
    void push(int y, const Ahead &ahead) {
        advance();
        const Pixel *src = source(y);
        Mid *row = window()[height_ - 1];
        if (!src)
            std::fill_n(row, size_.width, constantRow(filter_));
        last() = src ? stage_.filter(src, row, ahead) : stage_.describe(row);
    }

    Mid *const *window() const { return places_ + first_; }
    /// The description of the window's last row, and of all rows together.
    About &last() { return about_[first_]; }
    About about() const {
        About all = about_[0];
        for (int j = 1; j < height_; ++j)
            all = join(all, about_[j]);
        return all;
    }

private:
    Rows<const Pixel> src_;
    NoxiSize size_;
    const FixedFilter<Pixel, Mid> &filter_;
    RowStage stage_;
    int height_, first_ = 0;
    Mid *places_[2 * largestWindow]; ///< of each row, twice: a window runs over the ring's end
    About about_[largestWindow] = {};
};

struct RowStage8u {
    RowKernel8u16s kernel;
    int width;
    RowEnds<Nox8u> ends;

    Nothing filter(const Nox8u *src, Nox16s *row, const Ahead &ahead) const {
        kernel(src, row, width, ends, ahead);
        return {};
    }
    Nothing describe(const Nox16s *) const { return {}; }
};

struct RowStage32f {
    RowKernel32f kernel;
    int width;
    RowEnds<Nox32f> ends;
    RowGuess guess;

    Spread filter(const Nox32f *src, Nox32f *row, const Ahead &ahead) {
        return kernel(src, row, width, ends, guess, ahead);
    }
    Spread describe(const Nox32f *row) const { return spreadOf(row, 1); }
};

/// Rows of the slice: column(window, description, row of dst, what comes next) for each. Each pass asks for the row
/// that the other one begins with.
template <class Mid, class About, class RowStage, class Pixel, class Out, class Column>
void convolve(Rows<const Pixel> src, Rows<Out> dst, NoxiSize size, const FixedFilter<Pixel, Mid> &filter,
              RowStage stage, Nox8u *buffer, const Slice &slice, const Column &column) {
    if (slice.count < 1)
        return;
    const int reach = filter.columnTapCount / 2;
    Ring<Mid, About, Pixel, RowStage> ring(src, size, filter, stage, buffer);
    for (int y = slice.first - reach; y < slice.first + reach; ++y)
        ring.push(y, Ahead());
    const bool asks = leavesCaches(static_cast<long long>(sizeof(Pixel) + sizeof(Out)) * size.width * size.height);
    const int last = slice.first + slice.count - 1;
    Ahead result, source;
    for (int y = slice.first; y <= last; ++y) {
        Out *to = dst[y - slice.first];
        if (asks) {
            result = Ahead(to);
            source = y < last ? Ahead(ring.source(y + reach + 1)) : Ahead();
        }
        ring.push(y + reach, result);
        column(ring.window(), ring.about(), to, source);
    }
}

template <class Pixel, class Tap>
RowEnds<Pixel> rowEnds(const FixedFilter<Pixel, Tap> &filter, int width) {
    return {width, filter.rowTapCount, filter.borderType, filter.borderValue};
}

RowStage8u rowStage(const FixedFilter<Nox8u, Nox16s> &filter, int width) {
    return {owntabRow_8u16s[filter.rowIndex], width, rowEnds(filter, width)};
}

} // namespace

extern "C" {

void ownFilterConvolution_8u16s_C1R_omp(Rows<const Nox8u> src, Rows<Nox16s> dst, NoxiSize size,
                                        const FixedFilter<Nox8u, Nox16s> &filter, Nox8u *buffer, const Slice &slice) {
    const ColumnKernel16s kernel = owntabColumn_8u16s[filter.columnIndex];
    convolve<Nox16s, Nothing>(src, dst, size, filter, rowStage(filter, size.width), buffer, slice,
                              [&](const Nox16s *const *rows, Nothing, Nox16s *out, const Ahead &ahead) {
                                  kernel(rows, out, size.width, ahead);
                              });
}

void ownFilterConvolution_8u8s_C1R_omp(Rows<const Nox8u> src, Rows<Nox8s> dst, NoxiSize size,
                                       const FixedFilter<Nox8u, Nox16s> &filter, int divisor, Nox8u *buffer,
                                       const Slice &slice) {
    const ColumnKernel16s8s kernel = owntabColumn_8u8s[filter.columnIndex];
    const Quotient<Nox32f> by = makeQuotient<Nox32f>(divisor);
    convolve<Nox16s, Nothing>(src, dst, size, filter, rowStage(filter, size.width), buffer, slice,
                              [&](const Nox16s *const *rows, Nothing, Nox8s *out, const Ahead &ahead) {
                                  kernel(rows, out, size.width, by, ahead);
                              });
}

void ownFilterConvolution_8u_C1R_omp(Rows<const Nox8u> src, Rows<Nox8u> dst, NoxiSize size,
                                     const FixedFilter<Nox8u, Nox16s> &filter, Nox8u *buffer, const Slice &slice) {
    const ColumnKernel16s8u kernel = owntabColumn_8u[filter.columnIndex];
    convolve<Nox16s, Nothing>(src, dst, size, filter, rowStage(filter, size.width), buffer, slice,
                              [&](const Nox16s *const *rows, Nothing, Nox8u *out, const Ahead &ahead) {
                                  kernel(rows, out, size.width, ahead);
                              });
}

void ownFilterConvolution_32f_C1R_omp(Rows<const Nox32f> src, Rows<Nox32f> dst, NoxiSize size,
                                      const FixedFilter<Nox32f, Nox32f> &filter, Nox8u *buffer, const Slice &slice) {
    const ColumnKernel32f kernel = owntabColumn_32f[filter.columnIndex];
    const Spread border = filter.borderType == noxBorderConstant ? spreadOf(&filter.borderValue, 1) : Spread();
    const RowStage32f stage = {owntabRow_32f[filter.rowIndex],
                               size.width,
                               rowEnds(filter, size.width),
                               {border, columnWeights_32f[filter.columnIndex]}};
    convolve<Nox32f, Spread>(src, dst, size, filter, stage, buffer, slice,
                             [&](const Nox32f *const *rows, const Spread &spread, Nox32f *out, const Ahead &ahead) {
                                 kernel(rows, out, size.width, spread, ahead);
                             });
}

// The whole image is a slice. The column taps are built into the kernels; the divisor of 8u is, too.
void ownFilterConvolution_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, int width, int height,
                                    const Nox16s *rowTaps, int rowTapCount, const Nox16s * /*columnTaps*/,
                                    int columnTapCount, int borderType, Nox8u borderValue, Nox8u *buffer, int rowIndex,
                                    int columnIndex) {
    ownFilterConvolution_8u16s_C1R_omp(
        {src, srcStep}, {dst, dstStep}, {width, height},
        {rowTaps, rowTapCount, columnTapCount, rowIndex, columnIndex, borderType, borderValue}, buffer, {0, height, 0});
}

void ownFilterConvolution_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep, int width, int height,
                                   const Nox16s *rowTaps, int rowTapCount, const Nox16s * /*columnTaps*/,
                                   int columnTapCount, int borderType, Nox8u borderValue, Nox8u *buffer, int rowIndex,
                                   int columnIndex, int divisor) {
    ownFilterConvolution_8u8s_C1R_omp(
        {src, srcStep}, {dst, dstStep}, {width, height},
        {rowTaps, rowTapCount, columnTapCount, rowIndex, columnIndex, borderType, borderValue}, divisor, buffer,
        {0, height, 0});
}

void ownFilterConvolution_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, int width, int height,
                                 const Nox16s *rowTaps, int rowTapCount, const Nox16s * /*columnTaps*/,
                                 int columnTapCount, int borderType, Nox8u borderValue, Nox8u *buffer, int rowIndex,
                                 int columnIndex, int /*divisor*/) {
    ownFilterConvolution_8u_C1R_omp(
        {src, srcStep}, {dst, dstStep}, {width, height},
        {rowTaps, rowTapCount, columnTapCount, rowIndex, columnIndex, borderType, borderValue}, buffer, {0, height, 0});
}

void ownFilterConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width, int height,
                                  const Nox32f *rowTaps, int rowTapCount, const Nox32f * /*columnTaps*/,
                                  int columnTapCount, int borderType, Nox32f borderValue, Nox8u *buffer, int rowIndex,
                                  int columnIndex) {
    ownFilterConvolution_32f_C1R_omp(
        {src, srcStep}, {dst, dstStep}, {width, height},
        {rowTaps, rowTapCount, columnTapCount, rowIndex, columnIndex, borderType, borderValue}, buffer, {0, height, 0});
}
}
