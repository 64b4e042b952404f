// Patches around a real-valued point: whole, with the source's edge repeated, or the inner part only.
#include "noxvsubpix.h"

#include "checks.h"
#include "noxvbilinear.h"
#include "rows.h"

using namespace nox;

namespace {

/// Where a patch lies along one axis. Cells min to max have two neighbours in the source; cell min is sample start.
struct Axis {
    int length, min, max, start;
    float fraction;

    int inner() const { return max - min + 1; }
    int end() const { return start + inner(); } ///< sample of the cell behind max
};

/// n cells around `centre` over s samples. The first cell's place is single precision, its floor is exact.
Axis placeAxis(float centre, int n, int s) {
    const float left = centre - static_cast<float>(n - 1) * 0.5F;
    const double place = left;
    const float fraction = fractionOf(left);
    if (!(place < s)) // not a number, too
        return {n, 0, -1, s - 1, fraction};
    if (place < -static_cast<double>(n))
        return {n, n, n - 1, 0, fraction};
    const int first = static_cast<int>(std::floor(place));
    const int min = std::max(-first, 0), start = std::max(first, 0);
    const auto last = static_cast<int>(std::min<long long>(n - 1LL, s - 2LL - first));
    return {n, min, last, start, fraction};
}

/// The cells of a row: `before` up to min, inner(d) from there on, `after` behind max.
template <class D, class Inner>
NOX_INLINE void fillCells(D *d, const Axis &x, D before, D after, const Inner &inner) {
    for (int u = 0; u < x.min; ++u)
        d[u] = before;
    inner(d + x.min);
    for (int u = x.max + 1; u < x.length; ++u)
        d[u] = after;
}

/// Cells of an integer patch, in two rows of the source or in one.
template <class S, class D>
struct Cells {
    FixedBilinear<S, D> two, one;
    FixedBlock<S, D> twoBlock, oneBlock;

    NOX_INLINE Cells(const Axis &x, const Axis &y, FixedScale scale)
        : two(fixedAxis<S>(x.fraction), fixedAxis<S>(y.fraction), scale), one(fixedAxis<S>(x.fraction), scale),
          twoBlock(two), oneBlock(one) {}

    NOX_INLINE D repeatedTwo(S p, S q) const { return two.repeated(p, q); }
    NOX_INLINE D repeatedOne(S p) const { return one.repeated(p); }
    NOX_INLINE void rowOfTwo(const S *p, const S *q, D *d, int n) const { interpolateRow(p, q, d, n, two, twoBlock); }
    NOX_INLINE void rowOfOne(const S *p, D *d, int n) const { interpolateRow(p, p, d, n, one, oneBlock); }
};

/// Cells of a float patch.
template <class S>
struct Cells<S, Nox32f> {
    AxisWeights<float> axis;
    FloatBilinear<S> two;

    NOX_INLINE Cells(const Axis &x, const Axis &y, FixedScale)
        : axis(floatAxis(x.fraction)), two(axis, floatAxis(y.fraction)) {}

    NOX_INLINE float repeatedTwo(S p, S q) const { return two.repeated(p, q); }
    NOX_INLINE float repeatedOne(S p) const { return static_cast<float>(p) * (axis.far + axis.near); }
    NOX_INLINE void rowOfTwo(const S *p, const S *q, float *d, int n) const {
        fillRow(d, n, [=, this](int x) NOX_INLINE_LAMBDA { return two(p[x], p[x + 1], q[x], q[x + 1]); });
    }
    NOX_INLINE void rowOfOne(const S *p, float *d, int n) const {
        fillRow(d, n, [=, this](int x) NOX_INLINE_LAMBDA {
            return static_cast<float>(p[x]) * axis.near + static_cast<float>(p[x + 1]) * axis.far;
        });
    }
};

template <class S, class D>
NOX_INLINE void fillInner(Rows<const S> src, Rows<D> dst, const Axis &x, const Axis &y, const Cells<S, D> &cells) {
    for (int v = y.min, row = y.start; v <= y.max; ++v, ++row)
        cells.rowOfTwo(src[row] + x.start, src[row + 1] + x.start, dst[v] + x.min, x.inner());
}

template <class S, class D>
NOX_INLINE void fillPatch(Rows<const S> src, NoxiSize srcRoi, Rows<D> dst, const Axis &x, const Axis &y,
                          const Cells<S, D> &cells) {
    const int last = srcRoi.width - 1;
    const auto repeatRow = [&](const S *p, D *d) NOX_INLINE_LAMBDA {
        fillCells(d, x, cells.repeatedOne(p[0]), cells.repeatedOne(p[last]),
                  [&](D *inner) NOX_INLINE_LAMBDA { cells.rowOfOne(p + x.start, inner, x.inner()); });
    };
    for (int v = 0; v < y.min; ++v)
        repeatRow(src[0], dst[v]);
    for (int v = y.min, row = y.start; v <= y.max; ++v, ++row) {
        const S *p = src[row], *q = src[row + 1];
        fillCells(dst[v], x, cells.repeatedTwo(p[0], q[0]), cells.repeatedTwo(p[last], q[last]),
                  [&](D *inner) NOX_INLINE_LAMBDA { cells.rowOfTwo(p + x.start, q + x.start, inner, x.inner()); });
    }
    for (int v = y.max + 1; v < y.length; ++v)
        repeatRow(src[srcRoi.height - 1], dst[v]);
}

template <class S, class D>
NOX_TIERS void innerKernel(const S *src, int srcStep, D *dst, int dstStep, const Axis &x, const Axis &y,
                           FixedScale scale) {
    fillInner<S, D>({src, srcStep}, {dst, dstStep}, x, y, Cells<S, D>(x, y, scale));
}

template <class S, class D>
NOX_TIERS void patchKernel(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, const Axis &x,
                           const Axis &y, FixedScale scale) {
    fillPatch<S, D>({src, srcStep}, srcRoi, {dst, dstStep}, x, y, Cells<S, D>(x, y, scale));
}

struct Place {
    Axis x, y;

    Place(NoxiPoint32f point, NoxiSize dstRoi, NoxiSize srcRoi, NoxiPoint *min, NoxiPoint *max)
        : x(placeAxis(point.x, dstRoi.width, srcRoi.width)), y(placeAxis(point.y, dstRoi.height, srcRoi.height)) {
        *min = {x.min, y.min};
        *max = {x.max, y.max};
    }
};

template <class S, class D>
NoxStatus cutInner(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                   NoxiPoint *min, NoxiPoint *max, FixedScale scale = plainScale<S>) {
    const Place place(point, dstRoi, srcRoi, min, max);
    if (place.x.inner() > 0 && place.y.inner() > 0)
        innerKernel(src, srcStep, dst, dstStep, place.x, place.y, scale);
    return noxStsNoError;
}

template <class S, class D>
NoxStatus cutPatch(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                   NoxiPoint *min, NoxiPoint *max, FixedScale scale = plainScale<S>) {
    const NoxStatus status = firstFailure(checkPointers(src, dst, min, max), checkSize(srcRoi), checkSize(dstRoi),
                                          checkStep<S>(srcStep, srcRoi.width), checkStep<D>(dstStep, dstRoi.width),
                                          checkEvenSteps<S>(srcStep), checkEvenSteps<D>(dstStep));
    if (status == noxStsNoError) {
        const Place place(point, dstRoi, srcRoi, min, max);
        patchKernel(src, srcStep, srcRoi, dst, dstStep, place.x, place.y, scale);
    }
    return status;
}

} // namespace

#define NOX_PATCH_MEMBER(NAME, CUT, SOURCE, DESTINATION)                                                               \
    NoxStatus NAME(const SOURCE *src, int srcStep, NoxiSize srcRoi, DESTINATION *dst, int dstStep, NoxiSize dstRoi,    \
                   NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max) {                                               \
        return CUT(src, srcStep, srcRoi, dst, dstStep, dstRoi, point, min, max);                                       \
    }

#define NOX_PATCH_MEMBER_SFS(NAME, CUT, SOURCE, DESTINATION)                                                           \
    NoxStatus NAME(const SOURCE *src, int srcStep, NoxiSize srcRoi, DESTINATION *dst, int dstStep, NoxiSize dstRoi,    \
                   NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max, int scaleFactor) {                              \
        return CUT(src, srcStep, srcRoi, dst, dstStep, dstRoi, point, min, max, scaleOf(scaleFactor));                 \
    }

NOX_PATCH_MEMBER(noxiCopySubpixIntersect_8u_C1R, cutPatch, Nox8u, Nox8u)
NOX_PATCH_MEMBER_SFS(noxiCopySubpixIntersect_8u16u_C1R_Sfs, cutPatch, Nox8u, Nox16u)
NOX_PATCH_MEMBER(noxiCopySubpixIntersect_16u_C1R, cutPatch, Nox16u, Nox16u)
NOX_PATCH_MEMBER(noxiCopySubpixIntersect_8u32f_C1R, cutPatch, Nox8u, Nox32f)
NOX_PATCH_MEMBER(noxiCopySubpixIntersect_16u32f_C1R, cutPatch, Nox16u, Nox32f)
NOX_PATCH_MEMBER(noxiCopySubpixIntersect_32f_C1R, cutPatch, Nox32f, Nox32f)

NOX_PATCH_MEMBER(ownGetRectSubpix_8u_C1R, cutInner, Nox8u, Nox8u)
NOX_PATCH_MEMBER_SFS(ownGetRectSubpix_8u16u_C1R_Sfs, cutInner, Nox8u, Nox16u)
NOX_PATCH_MEMBER(ownGetRectSubpix_16u_C1R, cutInner, Nox16u, Nox16u)
NOX_PATCH_MEMBER(ownGetRectSubpix_16u32f_C1R, cutInner, Nox16u, Nox32f)
NOX_PATCH_MEMBER(ownGetRectSubpix_32f_C1R, cutInner, Nox32f, Nox32f)
