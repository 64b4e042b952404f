// Accumulators: sums, squares, products and running averages added to a float image, plain and under a mask.
#include <climits>
#include <type_traits>

#include "checks.h"
#include "noxcv/accumulate.h"
#include "rows.h"

using namespace nox;

/// What a float term is multiplied by under a mask byte of zero, and under any other.
extern "C" const Nox32f _noxvMaskCoeff[2] = {0.0F, 1.0F}; // NOLINT(bugprone-reserved-identifier)

namespace nox {

enum class Term { Source, Square, Product, Weighted };

/// One call: src2 is used by products, mask by masked forms, alpha by weighted sums.
template <class T>
struct Accumulation {
    Rows<const T> src1, src2;
    Rows<const Nox8u> mask;
    Rows<Nox32f> dst;
    NoxiSize roi;
    Nox32f alpha;
};

} // namespace nox

#define NOX_KERNELS "accumulate/noxvaccumulatekernels.inc"
#include "noxveachtier.h"

namespace {

/// Two-byte elements have their step tested for both rules before the next image is looked at.
template <class T>
NoxStatus checkSource(int step, int width) {
    return firstFailure(checkStep<T>(step, width), sizeof(T) == 2 ? checkEvenSteps<T>(step) : noxStsNoError);
}

template <class T, Term term>
NoxStatus maskedSum(const T *src1, int src1Step, const T *src2, int src2Step, const Nox8u *mask, int maskStep,
                    Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha = 0) {
    const NoxStatus status =
        firstFailure(checkPointers(src1, src2, mask, srcDst), checkSize(roi), checkSource<T>(src1Step, roi.width),
                     checkSource<T>(src2Step, roi.width), checkStep<Nox8u>(maskStep, roi.width),
                     checkStep<Nox32f>(srcDstStep, roi.width), checkEvenSteps<T>(src1Step, src2Step),
                     checkEvenSteps<Nox32f>(srcDstStep));
    if (status == noxStsNoError)
        NOX_ON_TIER(accumulate<T, term, true>(
            {{src1, src1Step}, {src2, src2Step}, {mask, maskStep}, {srcDst, srcDstStep}, roi, alpha}));
    return status;
}

template <class T, Term term>
NoxStatus plainSum(const T *src1, int src1Step, const T *src2, int src2Step, Nox32f *srcDst, int srcDstStep,
                   NoxiSize roi, Nox32f alpha = 0) {
    const NoxStatus status =
        firstFailure(checkPointers(src1, src2, srcDst), checkSize(roi), checkSource<T>(src1Step, roi.width),
                     checkSource<T>(src2Step, roi.width), checkStep<Nox32f>(srcDstStep, roi.width),
                     checkEvenSteps<T>(src1Step, src2Step), checkEvenSteps<Nox32f>(srcDstStep));
    if (status == noxStsNoError)
        NOX_ON_TIER(accumulate<T, term, false>(
            {{src1, src1Step}, {src2, src2Step}, {nullptr, 0}, {srcDst, srcDstStep}, roi, alpha}));
    return status;
}

} // namespace

// One line per pair of members, plain and masked. An operation on one image passes it twice.
#define NOX_ADD_PLAIN(FUNCTION, TERM, TAG)                                                                             \
    NoxStatus FUNCTION(const Nox##TAG *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi) {               \
        return plainSum<Nox##TAG, Term::TERM>(src, srcStep, src, srcStep, srcDst, srcDstStep, roi);                    \
    }
#define NOX_ADD_MASKED(FUNCTION, TERM, TAG)                                                                            \
    NoxStatus FUNCTION(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,              \
                       int srcDstStep, NoxiSize roi) {                                                                 \
        return maskedSum<Nox##TAG, Term::TERM>(src, srcStep, src, srcStep, mask, maskStep, srcDst, srcDstStep, roi);   \
    }
#define NOX_ADD(FUNCTION, MASKED_FUNCTION, TERM, TAG)                                                                  \
    NOX_ADD_PLAIN(FUNCTION, TERM, TAG)                                                                                 \
    NOX_ADD_MASKED(MASKED_FUNCTION, TERM, TAG)
#define NOX_ADD_PRODUCT(FUNCTION, MASKED_FUNCTION, TAG)                                                                \
    NoxStatus FUNCTION(const Nox##TAG *src1, int src1Step, const Nox##TAG *src2, int src2Step, Nox32f *srcDst,         \
                       int srcDstStep, NoxiSize roi) {                                                                 \
        return plainSum<Nox##TAG, Term::Product>(src1, src1Step, src2, src2Step, srcDst, srcDstStep, roi);             \
    }                                                                                                                  \
    NoxStatus MASKED_FUNCTION(const Nox##TAG *src1, int src1Step, const Nox##TAG *src2, int src2Step,                  \
                              const Nox8u *mask, int maskStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi) {         \
        return maskedSum<Nox##TAG, Term::Product>(src1, src1Step, src2, src2Step, mask, maskStep, srcDst, srcDstStep,  \
                                                  roi);                                                                \
    }
#define NOX_ADD_WEIGHTED(FUNCTION, MASKED_FUNCTION, TAG)                                                               \
    NoxStatus FUNCTION(const Nox##TAG *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha) { \
        return plainSum<Nox##TAG, Term::Weighted>(src, srcStep, src, srcStep, srcDst, srcDstStep, roi, alpha);         \
    }                                                                                                                  \
    NoxStatus MASKED_FUNCTION(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,       \
                              int srcDstStep, NoxiSize roi, Nox32f alpha) {                                            \
        return maskedSum<Nox##TAG, Term::Weighted>(src, srcStep, src, srcStep, mask, maskStep, srcDst, srcDstStep,     \
                                                   roi, alpha);                                                        \
    }

NOX_ADD(noxiAdd_8u32f_C1IR, noxiAdd_8u32f_C1IMR, Source, 8u)
NOX_ADD(noxiAdd_8s32f_C1IR, noxiAdd_8s32f_C1IMR, Source, 8s)
NOX_ADD(noxiAdd_16u32f_C1IR, noxiAdd_16u32f_C1IMR, Source, 16u)
NOX_ADD_MASKED(noxiAdd_32f_C1IMR, Source, 32f)
NOX_ADD(noxiAddSquare_8u32f_C1IR, noxiAddSquare_8u32f_C1IMR, Square, 8u)
NOX_ADD(noxiAddSquare_8s32f_C1IR, noxiAddSquare_8s32f_C1IMR, Square, 8s)
NOX_ADD(noxiAddSquare_16u32f_C1IR, noxiAddSquare_16u32f_C1IMR, Square, 16u)
NOX_ADD(noxiAddSquare_32f_C1IR, noxiAddSquare_32f_C1IMR, Square, 32f)
NOX_ADD_PRODUCT(noxiAddProduct_8u32f_C1IR, noxiAddProduct_8u32f_C1IMR, 8u)
NOX_ADD_PRODUCT(noxiAddProduct_8s32f_C1IR, noxiAddProduct_8s32f_C1IMR, 8s)
NOX_ADD_PRODUCT(noxiAddProduct_16u32f_C1IR, noxiAddProduct_16u32f_C1IMR, 16u)
NOX_ADD_PRODUCT(noxiAddProduct_32f_C1IR, noxiAddProduct_32f_C1IMR, 32f)
NOX_ADD_WEIGHTED(noxiAddWeighted_8u32f_C1IR, noxiAddWeighted_8u32f_C1IMR, 8u)
NOX_ADD_WEIGHTED(noxiAddWeighted_8s32f_C1IR, noxiAddWeighted_8s32f_C1IMR, 8s)
NOX_ADD_WEIGHTED(noxiAddWeighted_16u32f_C1IR, noxiAddWeighted_16u32f_C1IMR, 16u)
NOX_ADD_WEIGHTED(noxiAddWeighted_32f_C1IR, noxiAddWeighted_32f_C1IMR, 32f)
