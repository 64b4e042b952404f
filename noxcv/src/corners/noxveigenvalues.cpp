// Corner measures: eigenvalues and eigenvectors of the averaged gradient covariance.
#include "noxveigenvalues.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "frame/owncvomp.h"
#include "noxcv/corners.h"
#include "noxcv/filter.h"
#include "rows.h"

using namespace nox;

namespace {

NOX_TIERS void smallerValuesOfRow(const Element<Nox32f> *a, const Element<Nox32f> *c, const Element<Nox32f> *b,
                                  Element<Nox32f> *dst, int width, Nox32f half) {
    for (int x = 0; x < width; ++x) {
        const Nox32f difference = a[x] - c[x];
        const Nox32f root = std::sqrt(4 * (b[x] * b[x]) + difference * difference);
        dst[x] = (a[x] + c[x] - root) * half;
    }
}

/// The six numbers of some pixels, each kind by itself so that loops over them become vector code.
struct EigenBlock {
    static constexpr int length = 64;
    Nox32f larger[length], smaller[length], x1[length], y1[length], x2[length], y2[length];
};

/// The length of a vector, or what stands for one that is too short to divide by.
NOX_INLINE Nox32f lengthOf(Nox32f squares) {
    const Nox32f root = std::sqrt(squares);
    return root > 1.1920929e-7F ? root : 1.1920929e-7F;
}

NOX_TIERS void valuesOfBlock(const Element<Nox32f> *as, const Element<Nox32f> *cs, const Element<Nox32f> *bs,
                             EigenBlock &block, int count, Nox32f scale, Nox32f sign) {
    for (int i = 0; i < count; ++i) {
        const Nox32f a = as[i] * scale, b = bs[i] * scale, c = cs[i] * scale;
        const Nox32f difference = a - c;
        const Nox32f r = std::sqrt(4 * (b * b) + difference * difference);
        const Nox32f l2 = (a + c - r) * 0.5F, l1 = (a + c + r) * 0.5F;
        const Nox32f most = a > c ? a : c, least = a < c ? a : c, t = most * 0.01F;
        // Not-a-numbers fail these comparisons; one in a or c is in their product.
        const bool good = (least >= t) & (a * c - b * b >= t);
        const bool diagonal = t > std::fabs(b);
        const Nox32f signedB = b * sign, e1 = 0 - (a - l1), e2 = 0 - (a - l2), q = signedB * signedB;
        const Nox32f n1 = 1 / lengthOf(e1 * e1 + q), n2 = 1 / lengthOf(q + e2 * e2);
        block.larger[i] = good ? l1 : 0.0F;
        block.smaller[i] = good ? l2 : 0.0F;
        block.x1[i] = good ? (diagonal ? 1.0F : signedB * n1) : 0.0F;
        block.y1[i] = good ? (diagonal ? 0.0F : e1 * n1) : 0.0F;
        block.x2[i] = good ? (diagonal ? 0.0F : signedB * n2) : 0.0F;
        block.y2[i] = good ? (diagonal ? 1.0F : e2 * n2) : 0.0F;
    }
}

void storeBlock(const EigenBlock &block, Element<Nox32f> *dst, int count) {
    for (int i = 0; i < count; ++i, dst += 6) {
        dst[0] = block.larger[i];
        dst[1] = block.smaller[i];
        dst[2] = block.x1[i];
        dst[3] = block.y1[i];
        dst[4] = block.x2[i];
        dst[5] = block.y2[i];
    }
}

/// The filters of an element type, one name for each kind.
template <class T>
struct Filters;
template <>
struct Filters<Nox8u> {
    using Derivative = Nox16s;
    static constexpr auto sobelVert = noxiFilterSobelVertBorder_8u16s_C1R;
    static constexpr auto sobelHoriz = noxiFilterSobelHorizBorder_8u16s_C1R;
    static constexpr auto scharrVert = noxiFilterScharrVertBorder_8u16s_C1R;
    static constexpr auto scharrHoriz = noxiFilterScharrHorizBorder_8u16s_C1R;
    static constexpr auto sobelVertSize = noxiFilterSobelVertGetBufferSize_8u16s_C1R;
    static constexpr auto sobelHorizSize = noxiFilterSobelHorizGetBufferSize_8u16s_C1R;
    static constexpr auto scharrVertSize = noxiFilterScharrVertGetBufferSize_8u16s_C1R;
    static constexpr auto scharrHorizSize = noxiFilterScharrHorizGetBufferSize_8u16s_C1R;
};
template <>
struct Filters<Nox32f> {
    using Derivative = Nox32f;
    static constexpr auto sobelVert = noxiFilterSobelVertBorder_32f_C1R;
    static constexpr auto sobelHoriz = noxiFilterSobelHorizBorder_32f_C1R;
    static constexpr auto scharrVert = noxiFilterScharrVertBorder_32f_C1R;
    static constexpr auto scharrHoriz = noxiFilterScharrHorizBorder_32f_C1R;
    static constexpr auto sobelVertSize = noxiFilterSobelVertGetBufferSize_32f_C1R;
    static constexpr auto sobelHorizSize = noxiFilterSobelHorizGetBufferSize_32f_C1R;
    static constexpr auto scharrVertSize = noxiFilterScharrVertGetBufferSize_32f_C1R;
    static constexpr auto scharrHorizSize = noxiFilterScharrHorizGetBufferSize_32f_C1R;
};

/// A filter's mask of 3 x 3 or 5 x 5.
int maskOf(int size) { return size * 11; }

/// The largest work size of the filters. The Scharr filters count where avgWindow is 3: an old rule, which does no
/// harm, since they need no more than the Sobel filters of 3 x 3.
template <class T>
NoxStatus filterBytes(NoxiSize roi, int apertureSize, int avgWindow, int *bytes) {
    using F = Filters<T>;
    int sizes[5] = {};
    const bool scharr = avgWindow == 3;
    const NoxStatus status = firstFailure(F::sobelVertSize(roi, maskOf(apertureSize), &sizes[0]),
                                          F::sobelHorizSize(roi, maskOf(apertureSize), &sizes[1]),
                                          scharr ? F::scharrVertSize(roi, &sizes[2]) : noxStsNoError,
                                          scharr ? F::scharrHorizSize(roi, &sizes[3]) : noxStsNoError,
                                          noxiFilterLowpassGetBufferSize_32f_C1R(roi, maskOf(avgWindow), &sizes[4]));
    *bytes = *std::max_element(sizes, sizes + 5);
    return status;
}

bool isWindow(int size) { return size == 3 || size == 5; }

/// The size told: planes with room for aligned rows, and more of them for several threads.
template <class T>
NoxStatus bufferBytes(NoxiSize roi, int apertureSize, int avgWindow, long long *bytes) {
    int filters = 0;
    const NoxStatus status = filterBytes<T>(roi, apertureSize, avgWindow, &filters);
    const long long pitch = roundUp(static_cast<long long>(roi.width), 16LL), height = roi.height;
    constexpr bool isByte = std::is_same_v<T, Nox8u>;
    const int planes = (isByte ? 3 : 5) + (owncvGetMaxNumThreads() < 2 ? 0 : 3);
    const long long plane = limitedSum(limitedProduct(pitch * height, 4), 32);
    *bytes = limitedSum(limitedSum(limitedProduct(plane, planes), isByte ? limitedProduct(area(roi), 4) : 0),
                        filters + 64LL);
    return status;
}

template <class T>
NoxStatus storeBufferSize(NoxiSize roi, int apertureSize, int avgWindow, int *bufferSize) {
    NoxStatus status = firstFailure(checkPointers(bufferSize), checkSize(roi),
                                    require(isWindow(apertureSize) && isWindow(avgWindow), noxStsBadSize));
    long long bytes = 0;
    if (status == noxStsNoError)
        status = bufferBytes<T>(roi, apertureSize, avgWindow, &bytes);
    return status == noxStsNoError ? storeSize(bytes, bufferSize) : status;
}

/// The areas of the buffer. No filter works in place: the derivatives' memory takes the first average, and each plane
/// of products, once averaged, the next one. That leaves the room of the further planes unused, whatever the thread
/// count.
template <class T>
struct Areas {
    using D = typename Filters<T>::Derivative;

    D *dx, *dy;
    Nox32f *xx, *xy, *yy;
    Nox8u *filter;
    Areas(WorkBuffer &buffer, NoxiSize roi)
        : dx(buffer.take<D>(area(roi))), dy(buffer.aligned(32).take<D>(area(roi))),
          xx(buffer.aligned(32).take<Nox32f>(area(roi))), xy(buffer.aligned(32).take<Nox32f>(area(roi))),
          yy(buffer.aligned(32).take<Nox32f>(area(roi))), filter(buffer.aligned(32).take<Nox8u>(0)) {}
};

/// The averaged products.
struct Covariance {
    const Nox32f *a, *b, *c;
};

template <class D>
NOX_INLINE void products(const D *dx, const D *dy, Nox32f *xx, Nox32f *xy, Nox32f *yy, int count) {
    using Number = std::conditional_t<std::is_same_v<D, Nox16s>, int, Nox32f>;
    for (int i = 0; i < count; ++i) {
        const Number x = dx[i], y = dy[i];
        xx[i] = static_cast<Nox32f>(x * x);
        xy[i] = static_cast<Nox32f>(x * y);
        yy[i] = static_cast<Nox32f>(y * y);
    }
}
NOX_TIERS void productsOf(const Nox16s *dx, const Nox16s *dy, Nox32f *__restrict xx, Nox32f *__restrict xy,
                          Nox32f *__restrict yy, int count) {
    products(dx, dy, xx, xy, yy, count);
}
NOX_TIERS void productsOf(const Nox32f *dx, const Nox32f *dy, Nox32f *__restrict xx, Nox32f *__restrict xy,
                          Nox32f *__restrict yy, int count) {
    products(dx, dy, xx, xy, yy, count);
}

/// What a corner function is asked for.
template <class T>
struct Request {
    const T *src;
    int srcStep;
    Nox32f *dst;
    int dstStep;
    NoxiSize roi;
    int kernelType, apertureSize, avgWindow;
    Nox8u *buffer;

    bool scharr() const { return kernelType == 1; }
    Nox32f scale() const {
        const Nox32f s = 1.0F / static_cast<Nox32f>(255 << ((2 * apertureSize + 30) & 31));
        return scharr() ? s * 0.6125F : s;
    }
};

template <class T>
NoxStatus derive(const Request<T> &r, const Areas<T> &areas) {
    using F = Filters<T>;
    const int step = r.roi.width * static_cast<int>(sizeof(typename F::Derivative)), mask = maskOf(r.apertureSize);
    const auto filter = [&](auto scharr, auto sobel, auto *plane) {
        return r.scharr() ? scharr(r.src, r.srcStep, plane, step, r.roi, noxBorderReplicate, T(0), areas.filter)
                          : sobel(r.src, r.srcStep, plane, step, r.roi, mask, noxBorderReplicate, T(0), areas.filter);
    };
    const NoxStatus status = filter(F::scharrVert, F::sobelVert, areas.dx);
    return status != noxStsNoError ? status : filter(F::scharrHoriz, F::sobelHoriz, areas.dy);
}

template <class T>
NoxStatus average(const Request<T> &r, const Areas<T> &areas, Covariance *result) {
    const int step = r.roi.width * 4;
    Nox32f *const first = reinterpret_cast<Nox32f *>(areas.dx);
    const auto filter = [&](const Nox32f *from, Nox32f *to) {
        return noxiFilterLowpassBorder_32f_C1R(from, step, to, step, r.roi, maskOf(r.avgWindow), noxBorderReplicate, 0,
                                               areas.filter);
    };
    *result = {first, areas.xx, areas.xy};
    NoxStatus status = filter(areas.xx, first);
    if (status == noxStsNoError)
        status = filter(areas.xy, areas.xx);
    if (status == noxStsNoError)
        status = filter(areas.yy, areas.xy);
    return status;
}

template <class T>
NoxStatus covarianceOf(const Request<T> &r, Covariance *result) {
    WorkBuffer memory(r.buffer, 32);
    const Areas<T> areas(memory, r.roi);
    const NoxStatus status = derive(r, areas);
    if (status != noxStsNoError)
        return status;
    productsOf(areas.dx, areas.dy, areas.xx, areas.xy, areas.yy, r.roi.width * r.roi.height);
    return average(r, areas, result);
}

/// Rows that go through the whole pipeline together: with one thread as many as keep the planes in the second cache,
/// with more all of them, so that a filter's threads start once.
template <class T>
int bandRows(const Request<T> &r) {
    constexpr int cacheBytes = 5 << 18, planes = 5, fewest = 16;
    if (owncvGetMaxNumThreads() > 1)
        return r.roi.height;
    return std::max(cacheBytes / planes / 4 / r.roi.width, fewest);
}

/// Calls measure(planes, first row, rows) for bands of the image. A band is formed with some rows more on both sides,
/// where the image has them: the filters take a band's edge for the image's, and what they make next to it is left out.
template <class T, class Measure>
NoxStatus forEachBand(const Request<T> &r, const Measure &measure) {
    const int rows = bandRows(r), halo = r.apertureSize / 2 + r.avgWindow / 2;
    for (int first = 0; first < r.roi.height;) {
        const int count = std::min(rows, r.roi.height - first);
        const int top = std::min(halo, first), below = std::min(halo, r.roi.height - first - count);
        Request<T> band = r;
        band.src = reinterpret_cast<const T *>(Rows<const T>{r.src, r.srcStep}[first - top]);
        band.roi.height = top + count + below;
        Covariance m = {};
        const NoxStatus status = covarianceOf(band, &m);
        if (status != noxStsNoError)
            return status;
        const std::ptrdiff_t skipped = static_cast<std::ptrdiff_t>(top) * r.roi.width;
        measure({m.a + skipped, m.b + skipped, m.c + skipped}, first, count);
        first += count;
    }
    return noxStsNoError;
}

template <int floats, class T>
NoxStatus checkCorners(const Request<T> &r) {
    const NoxStatus status = firstFailure(
        checkPointers(r.src, r.dst, r.buffer), checkSize(r.roi), checkStep<T>(r.srcStep, r.roi.width),
        checkStep<Nox32f>(r.dstStep, static_cast<long long>(r.roi.width) * floats), checkEvenSteps<T>(r.srcStep),
        checkEvenSteps<Nox32f>(r.dstStep), require(r.kernelType == 0 || r.kernelType == 1, noxStsBadArgument),
        require(isWindow(r.apertureSize) && (r.kernelType != 1 || r.apertureSize == 3), noxStsBadSize),
        require(isWindow(r.avgWindow), noxStsBadSize));
    if (status != noxStsNoError)
        return status;
    long long bytes = 0;
    const NoxStatus sized = bufferBytes<T>(r.roi, r.apertureSize, r.avgWindow, &bytes);
    return sized != noxStsNoError ? sized : checkBufferBytes(bytes);
}

template <class T>
Nox32f *rowOf(const Request<T> &r, int y) {
    return reinterpret_cast<Nox32f *>(Rows<Nox32f>{r.dst, r.dstStep}[y]);
}

template <class T>
NoxStatus minEigenVal(const Request<T> &r) {
    const NoxStatus status = checkCorners<1>(r);
    if (status != noxStsNoError)
        return status;
    return forEachBand(r, [&](const Covariance &m, int first, int rows) {
        calcMinValues(m.a, m.c, m.b, r.roi.width * 4, rowOf(r, first), r.dstStep, r.roi.width, rows, r.scale());
    });
}

template <class T>
NoxStatus eigenValsVecs(const Request<T> &r) {
    const NoxStatus status = checkCorners<6>(r);
    if (status != noxStsNoError)
        return status;
    return forEachBand(r, [&](const Covariance &m, int first, int rows) {
        calcValues(m.a, m.c, m.b, r.roi.width * 4, rowOf(r, first), r.dstStep, r.roi.width, rows, r.scale(),
                   r.scharr() ? 1 : -1);
    });
}

} // namespace

void calcMinValues(const Nox32f *a, const Nox32f *c, const Nox32f *b, int planeStep, Nox32f *dst, int dstStep,
                   int width, int height, Nox32f scale) {
    const Rows<const Nox32f> as{a, planeStep}, bs{b, planeStep}, cs{c, planeStep};
    const Rows<Nox32f> out{dst, dstStep};
    for (int y = 0; y < height; ++y)
        smallerValuesOfRow(as[y], cs[y], bs[y], out[y], width, 0.5F * scale);
}

void calcValues(const Nox32f *a, const Nox32f *c, const Nox32f *b, int planeStep, Nox32f *dst, int dstStep, int width,
                int height, Nox32f scale, int sign) {
    const Rows<const Nox32f> as{a, planeStep}, bs{b, planeStep}, cs{c, planeStep};
    const Rows<Nox32f> out{dst, dstStep};
    EigenBlock block;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; x += EigenBlock::length) {
            const int count = std::min(EigenBlock::length, width - x);
            valuesOfBlock(as[y] + x, cs[y] + x, bs[y] + x, block, count, scale, static_cast<Nox32f>(sign));
            storeBlock(block, out[y] + 6 * static_cast<std::ptrdiff_t>(x), count);
        }
}

// One line per member.
#define NOX_CORNERS(FUNCTION, TYPE, MEASURE)                                                                           \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi, int kernelType,           \
                       int apertureSize, int avgWindow, Nox8u *buffer) {                                               \
        return MEASURE<TYPE>({src, srcStep, dst, dstStep, roi, kernelType, apertureSize, avgWindow, buffer});          \
    }
#define NOX_CORNERSIZE(FUNCTION, TYPE)                                                                                 \
    NoxStatus FUNCTION(NoxiSize roi, int apertureSize, int avgWindow, int *bufferSize) {                               \
        return storeBufferSize<TYPE>(roi, apertureSize, avgWindow, bufferSize);                                        \
    }

NOX_CORNERS(noxiMinEigenVal_8u32f_C1R, Nox8u, minEigenVal)
NOX_CORNERS(noxiMinEigenVal_32f_C1R, Nox32f, minEigenVal)
NOX_CORNERS(noxiEigenValsVecs_8u32f_C1R, Nox8u, eigenValsVecs)
NOX_CORNERS(noxiEigenValsVecs_32f_C1R, Nox32f, eigenValsVecs)
NOX_CORNERSIZE(noxiMinEigenValGetBufferSize_8u32f_C1R, Nox8u)
NOX_CORNERSIZE(noxiMinEigenValGetBufferSize_32f_C1R, Nox32f)
NOX_CORNERSIZE(noxiEigenValsVecsGetBufferSize_8u32f_C1R, Nox8u)
NOX_CORNERSIZE(noxiEigenValsVecsGetBufferSize_32f_C1R, Nox32f)
