// Patches around a real-valued point: whole, with the source's edge repeated, or the inner part only.
#include "noxvsubpix.h"

#include <algorithm>

#include "checks.h"
#include "noxvbilinear.h"
#include "rows.h"

using namespace nox;

PatchAxis nox::placeAxis(float centre, int n, int s) {
    const float left = centre - static_cast<float>(n - 1) * 0.5F;
    const double place = left;
    const float fraction = fractionOf(left);
    if (!(place < s)) // not a number, too
        return {n, 0, -1, s - 1, fraction};
    if (place < -static_cast<double>(n))
        return {n, n, n - 1, 0, fraction};
    const auto towardsZero = static_cast<int>(left);
    const int first = static_cast<float>(towardsZero) > left ? towardsZero - 1 : towardsZero;
    const int min = std::max(-first, 0), start = std::max(first, 0);
    const auto last = static_cast<int>(std::min<long long>(n - 1LL, s - 2LL - first));
    return {n, min, last, start, fraction};
}

namespace {

using Axis = PatchAxis;

/// Cells of an integer patch, in two rows of the source or in one.
template <class S, class D>
struct Cells {
    FixedBilinear<S, D> two, one;

    NOX_INLINE Cells(const Axis &x, const Axis &y, FixedScale scale)
        : two(fixedAxis<S>(x.fraction), fixedAxis<S>(y.fraction), scale), one(fixedAxis<S>(x.fraction), scale) {}

    NOX_INLINE D repeatedTwo(S p, S q) const { return two.repeated(p, q); }
    NOX_INLINE D repeatedOne(S p) const { return one.repeated(p); }
    /// Rows of cells, from the pixels at src on.
    void rowsOfTwo(Rows<const S> src, Rows<D> dst, NoxiSize size) const { interpolatePatch(src, dst, size, two); }
    void rowOfOne(const S *p, D *d, int n) const {
        if (n > 0)
            interpolatePatch(Rows<const S>{p, 0}, Rows<D>{d, 0}, {n, 1}, one);
    }
};

/// Cells of a float patch.
template <class S>
struct Cells<S, Nox32f> {
    AxisWeights<float> axis;
    FloatBilinear two;

    NOX_INLINE Cells(const Axis &x, const Axis &y, FixedScale)
        : axis(floatAxis(x.fraction)), two(axis, floatAxis(y.fraction)) {}

    NOX_INLINE float repeatedTwo(S p, S q) const { return two.repeated(asFloat(p), asFloat(q)); }
    NOX_INLINE float repeatedOne(S p) const { return asFloat(p) * (axis.far + axis.near); }
    void rowsOfTwo(Rows<const S> src, Rows<float> dst, NoxiSize size) const { interpolatePatch(src, dst, size, two); }
    void rowOfOne(const Element<S> *p, Element<float> *d, int n) const {
        for (int x = 0; x < n; ++x)
            d[x] = asFloat(p[x]) * axis.near + asFloat(p[x + 1]) * axis.far;
    }
};

template <class S, class D>
void fillInner(Rows<const S> src, Rows<D> dst, const Axis &x, const Axis &y, const Cells<S, D> &cells) {
    cells.rowsOfTwo({src[y.start] + x.start, src.step}, {dst[y.min] + x.min, dst.step}, {x.inner(), y.inner()});
}

/// The cells left and right of the inner ones.
template <class D>
void fillSides(Element<D> *d, const Axis &x, D before, D after) {
    for (int u = 0; u < x.min; ++u)
        d[u] = before;
    for (int u = x.max + 1; u < x.length; ++u)
        d[u] = after;
}

/// All cells but the inner ones.
template <class S, class D>
void fillOuter(Rows<const S> src, NoxiSize srcRoi, Rows<D> dst, const Axis &x, const Axis &y,
               const Cells<S, D> &cells) {
    const int last = srcRoi.width - 1;
    if (x.inner() < x.length)
        for (int v = y.min, row = y.start; v <= y.max; ++v, ++row)
            fillSides<D>(dst[v], x, cells.repeatedTwo(src[row][0], src[row + 1][0]),
                         cells.repeatedTwo(src[row][last], src[row + 1][last]));
    for (int v = 0; v < y.length; ++v) {
        if (v >= y.min && v <= y.max)
            continue;
        const Element<S> *p = src[v < y.min ? 0 : srcRoi.height - 1];
        fillSides<D>(dst[v], x, cells.repeatedOne(p[0]), cells.repeatedOne(p[last]));
        cells.rowOfOne(p + x.start, dst[v] + x.min, x.inner());
    }
}

/// Places a patch and fills its inner part, and the rest as well if it is to be whole.
template <class S, class D>
NoxStatus cut(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
              NoxiPoint *min, NoxiPoint *max, FixedScale scale, bool whole) {
    const Axis x = placeAxis(point.x, dstRoi.width, srcRoi.width), y = placeAxis(point.y, dstRoi.height, srcRoi.height);
    *min = {x.min, y.min};
    *max = {x.max, y.max};
    const Rows<const S> from = {src, srcStep};
    const Rows<D> to = {dst, dstStep};
    const Cells<S, D> cells(x, y, scale);
    if (x.inner() > 0 && y.inner() > 0)
        fillInner(from, to, x, y, cells);
    if (whole && (x.inner() < x.length || y.inner() < y.length))
        fillOuter(from, srcRoi, to, x, y, cells);
    return noxStsNoError;
}

template <class S, class D>
NoxStatus cutPatch(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                   NoxiPoint *min, NoxiPoint *max, FixedScale scale = plainScale<S>) {
    const NoxStatus status = firstFailure(checkPointers(src, dst, min, max), checkSize(srcRoi), checkSize(dstRoi),
                                          checkStep<S>(srcStep, srcRoi.width), checkStep<D>(dstStep, dstRoi.width),
                                          checkEvenSteps<S>(srcStep), checkEvenSteps<D>(dstStep));
    return status == noxStsNoError ? cut(src, srcStep, srcRoi, dst, dstStep, dstRoi, point, min, max, scale, true)
                                   : status;
}

template <class S, class D>
NoxStatus cutInner(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                   NoxiPoint *min, NoxiPoint *max, FixedScale scale = plainScale<S>) {
    return cut(src, srcStep, srcRoi, dst, dstStep, dstRoi, point, min, max, scale, false);
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
