// Masked norms: of an image, of a difference, and of a difference relative to the second image.
#include <algorithm>
#include <cmath>

#include "checks.h"
#include "noxcore.h"
#include "noxcv/statistics.h"
#include "noxvreduceblock.h"

using namespace nox;

namespace {

// When the members go parallel.
constexpr ParallelFrom serial = {0, false}, from17 = {17, false}, from17OnCores = {17, true}, from19 = {19, false};

/// numerator / denominator, or its root; the constants of the core library for a denominator of zero.
template <Norm norm, class Value>
NoxStatus relative(Value numerator, Value denominator, Nox64f *value) {
    if (denominator == 0) {
        *value = numerator == 0  ? noxConstantOfNAN_64f
                 : numerator > 0 ? noxConstantOfINF_64f
                                 : noxConstantOfINF_NEG_64f;
        return noxStsDivideByZero;
    }
    const long double ratio = static_cast<long double>(numerator) / static_cast<long double>(denominator);
    *value = static_cast<Nox64f>(norm == Norm::L2 ? std::sqrt(ratio) : ratio);
    return noxStsNoError;
}

template <class T, Form form, Norm norm, class Block>
NoxStatus measure(const Region<T> &region, int slices, Block block, Nox64f *value) {
    using Result = NormSlots<T, form, norm>;
    const auto body = [&](int first, int count) { return block(region.rows(first, count)); };
    const auto join = [](Result &total, const Result &next) {
        for (int i = 0; i < resultsOf<form>; ++i)
            total.value[i] =
                norm == Norm::Inf ? std::max(total.value[i], next.value[i]) : total.value[i] + next.value[i];
    };
    Result result;
    const NoxStatus status = reduceRows(region.height, slices, body, join, result);
    if (status != noxStsNoError)
        return status;
    if constexpr (form == Form::NormRel)
        return relative<norm>(result.value[0], result.value[1], value);
    const auto total = static_cast<long double>(result.value[0]);
    *value = static_cast<Nox64f>(norm == Norm::L2 ? std::sqrt(total) : total);
    return noxStsNoError;
}

template <class T, Form form, Norm norm, int channels, class Block>
NoxStatus maskedNorm(const T *src1, int src1Step, const T *src2, int src2Step, const Nox8u *mask, int maskStep,
                     NoxiSize roi, int coi, Nox64f *value, ParallelFrom from, Block block) {
    const long long row = static_cast<long long>(roi.width) * channels;
    const NoxStatus status =
        firstFailure(checkPointers(src1, src2, mask, value), checkSize(roi), checkStep<T>(src1Step, row),
                     checkStep<T>(src2Step, row), checkStep<Nox8u>(maskStep, roi.width),
                     checkEvenSteps<T>(src1Step, src2Step), checkChannelOfInterest(coi));
    if (status != noxStsNoError)
        return status;
    const Region<T> region = {{src1, src1Step}, {src2, src2Step}, {mask, maskStep}, roi.width, roi.height, coi - 1};
    return measure<T, form, norm>(region, slicesOf(from, roi), block, value);
}

} // namespace

// One line per member: the kernel that measures a block of rows, and the entry. The plain norm passes its image twice.
#define NOX_BLOCK(FORM, NORM, TAG, LAYOUT, CHANNELS)                                                                   \
    static NormSlots<Nox##TAG, Form::FORM, Norm::NORM> own##FORM##_##NORM##_##TAG##_##LAYOUT##_A6(                     \
        const Region<Nox##TAG> &region) {                                                                              \
        return NOX_ON_TIER(normBlock<Nox##TAG, Form::FORM, Norm::NORM, CHANNELS>(region));                             \
    }
#define NOX_NORM_C1(FUNCTION, NORM, TAG, PATH)                                                                         \
    NOX_BLOCK(Norm, NORM, TAG, C1MR, 1)                                                                                \
    NoxStatus FUNCTION(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,                \
                       Nox64f *value) {                                                                                \
        return maskedNorm<Nox##TAG, Form::Norm, Norm::NORM, 1>(src, srcStep, src, srcStep, mask, maskStep, roi, 1,     \
                                                               value, PATH, ownNorm_##NORM##_##TAG##_C1MR_A6);         \
    }
#define NOX_NORM_C3C(FUNCTION, NORM, TAG, PATH)                                                                        \
    NOX_BLOCK(Norm, NORM, TAG, C3CMR, 3)                                                                               \
    NoxStatus FUNCTION(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi,       \
                       Nox64f *value) {                                                                                \
        return maskedNorm<Nox##TAG, Form::Norm, Norm::NORM, 3>(src, srcStep, src, srcStep, mask, maskStep, roi, coi,   \
                                                               value, PATH, ownNorm_##NORM##_##TAG##_C3CMR_A6);        \
    }
#define NOX_NORM2_C1(FUNCTION, FORM, NORM, TAG, PATH)                                                                  \
    NOX_BLOCK(FORM, NORM, TAG, C1MR, 1)                                                                                \
    NoxStatus FUNCTION(const Nox##TAG *src1, int src1Step, const Nox##TAG *src2, int src2Step, const Nox8u *mask,      \
                       int maskStep, NoxiSize roi, Nox64f *value) {                                                    \
        return maskedNorm<Nox##TAG, Form::FORM, Norm::NORM, 1>(src1, src1Step, src2, src2Step, mask, maskStep, roi, 1, \
                                                               value, PATH, own##FORM##_##NORM##_##TAG##_C1MR_A6);     \
    }
#define NOX_NORM2_C3C(FUNCTION, FORM, NORM, TAG, PATH)                                                                 \
    NOX_BLOCK(FORM, NORM, TAG, C3CMR, 3)                                                                               \
    NoxStatus FUNCTION(const Nox##TAG *src1, int src1Step, const Nox##TAG *src2, int src2Step, const Nox8u *mask,      \
                       int maskStep, NoxiSize roi, int coi, Nox64f *value) {                                           \
        return maskedNorm<Nox##TAG, Form::FORM, Norm::NORM, 3>(src1, src1Step, src2, src2Step, mask, maskStep, roi,    \
                                                               coi, value, PATH,                                       \
                                                               own##FORM##_##NORM##_##TAG##_C3CMR_A6);                 \
    }

NOX_NORM_C1(noxiNorm_Inf_8u_C1MR, Inf, 8u, from19)
NOX_NORM_C3C(noxiNorm_Inf_8u_C3CMR, Inf, 8u, from17)
NOX_NORM_C1(noxiNorm_Inf_8s_C1MR, Inf, 8s, from19)
NOX_NORM_C3C(noxiNorm_Inf_8s_C3CMR, Inf, 8s, from17)
NOX_NORM_C1(noxiNorm_Inf_16u_C1MR, Inf, 16u, from19)
NOX_NORM_C3C(noxiNorm_Inf_16u_C3CMR, Inf, 16u, from17)
NOX_NORM_C1(noxiNorm_Inf_32f_C1MR, Inf, 32f, from17)
NOX_NORM_C3C(noxiNorm_Inf_32f_C3CMR, Inf, 32f, from17)
NOX_NORM_C1(noxiNorm_L1_8u_C1MR, L1, 8u, from17OnCores)
NOX_NORM_C3C(noxiNorm_L1_8u_C3CMR, L1, 8u, from17)
NOX_NORM_C1(noxiNorm_L1_8s_C1MR, L1, 8s, from17OnCores)
NOX_NORM_C3C(noxiNorm_L1_8s_C3CMR, L1, 8s, from17)
NOX_NORM_C1(noxiNorm_L1_16u_C1MR, L1, 16u, from17)
NOX_NORM_C3C(noxiNorm_L1_16u_C3CMR, L1, 16u, from17)
NOX_NORM_C1(noxiNorm_L1_32f_C1MR, L1, 32f, from17)
NOX_NORM_C3C(noxiNorm_L1_32f_C3CMR, L1, 32f, from17)
NOX_NORM_C1(noxiNorm_L2_8u_C1MR, L2, 8u, from17OnCores)
NOX_NORM_C3C(noxiNorm_L2_8u_C3CMR, L2, 8u, from17OnCores)
NOX_NORM_C1(noxiNorm_L2_8s_C1MR, L2, 8s, from17OnCores)
NOX_NORM_C3C(noxiNorm_L2_8s_C3CMR, L2, 8s, from17OnCores)
NOX_NORM_C1(noxiNorm_L2_16u_C1MR, L2, 16u, from17)
NOX_NORM_C3C(noxiNorm_L2_16u_C3CMR, L2, 16u, from17OnCores)
NOX_NORM_C1(noxiNorm_L2_32f_C1MR, L2, 32f, from17)
NOX_NORM_C3C(noxiNorm_L2_32f_C3CMR, L2, 32f, from17OnCores)
NOX_NORM2_C1(noxiNormDiff_Inf_8u_C1MR, NormDiff, Inf, 8u, serial)
NOX_NORM2_C3C(noxiNormDiff_Inf_8u_C3CMR, NormDiff, Inf, 8u, serial)
NOX_NORM2_C1(noxiNormDiff_Inf_8s_C1MR, NormDiff, Inf, 8s, serial)
NOX_NORM2_C3C(noxiNormDiff_Inf_8s_C3CMR, NormDiff, Inf, 8s, serial)
NOX_NORM2_C1(noxiNormDiff_Inf_16u_C1MR, NormDiff, Inf, 16u, serial)
NOX_NORM2_C3C(noxiNormDiff_Inf_16u_C3CMR, NormDiff, Inf, 16u, serial)
NOX_NORM2_C1(noxiNormDiff_Inf_32f_C1MR, NormDiff, Inf, 32f, serial)
NOX_NORM2_C3C(noxiNormDiff_Inf_32f_C3CMR, NormDiff, Inf, 32f, serial)
NOX_NORM2_C1(noxiNormDiff_L1_8u_C1MR, NormDiff, L1, 8u, from17OnCores)
NOX_NORM2_C3C(noxiNormDiff_L1_8u_C3CMR, NormDiff, L1, 8u, from17)
NOX_NORM2_C1(noxiNormDiff_L1_8s_C1MR, NormDiff, L1, 8s, from17OnCores)
NOX_NORM2_C3C(noxiNormDiff_L1_8s_C3CMR, NormDiff, L1, 8s, from17OnCores)
NOX_NORM2_C1(noxiNormDiff_L1_16u_C1MR, NormDiff, L1, 16u, from17)
NOX_NORM2_C3C(noxiNormDiff_L1_16u_C3CMR, NormDiff, L1, 16u, from17OnCores)
NOX_NORM2_C1(noxiNormDiff_L1_32f_C1MR, NormDiff, L1, 32f, serial)
NOX_NORM2_C3C(noxiNormDiff_L1_32f_C3CMR, NormDiff, L1, 32f, serial)
NOX_NORM2_C1(noxiNormDiff_L2_8u_C1MR, NormDiff, L2, 8u, from17OnCores)
NOX_NORM2_C3C(noxiNormDiff_L2_8u_C3CMR, NormDiff, L2, 8u, from17)
NOX_NORM2_C1(noxiNormDiff_L2_8s_C1MR, NormDiff, L2, 8s, from17OnCores)
NOX_NORM2_C3C(noxiNormDiff_L2_8s_C3CMR, NormDiff, L2, 8s, from17)
NOX_NORM2_C1(noxiNormDiff_L2_16u_C1MR, NormDiff, L2, 16u, from17)
NOX_NORM2_C3C(noxiNormDiff_L2_16u_C3CMR, NormDiff, L2, 16u, from17OnCores)
NOX_NORM2_C1(noxiNormDiff_L2_32f_C1MR, NormDiff, L2, 32f, serial)
NOX_NORM2_C3C(noxiNormDiff_L2_32f_C3CMR, NormDiff, L2, 32f, serial)
NOX_NORM2_C1(noxiNormRel_Inf_8u_C1MR, NormRel, Inf, 8u, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_Inf_8u_C3CMR, NormRel, Inf, 8u, from17OnCores)
NOX_NORM2_C1(noxiNormRel_Inf_8s_C1MR, NormRel, Inf, 8s, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_Inf_8s_C3CMR, NormRel, Inf, 8s, from17OnCores)
NOX_NORM2_C1(noxiNormRel_Inf_16u_C1MR, NormRel, Inf, 16u, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_Inf_16u_C3CMR, NormRel, Inf, 16u, from17)
NOX_NORM2_C1(noxiNormRel_Inf_32f_C1MR, NormRel, Inf, 32f, from17)
NOX_NORM2_C3C(noxiNormRel_Inf_32f_C3CMR, NormRel, Inf, 32f, from17)
NOX_NORM2_C1(noxiNormRel_L1_8u_C1MR, NormRel, L1, 8u, serial)
NOX_NORM2_C3C(noxiNormRel_L1_8u_C3CMR, NormRel, L1, 8u, from17OnCores)
NOX_NORM2_C1(noxiNormRel_L1_8s_C1MR, NormRel, L1, 8s, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_L1_8s_C3CMR, NormRel, L1, 8s, from17OnCores)
NOX_NORM2_C1(noxiNormRel_L1_16u_C1MR, NormRel, L1, 16u, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_L1_16u_C3CMR, NormRel, L1, 16u, from17)
NOX_NORM2_C1(noxiNormRel_L1_32f_C1MR, NormRel, L1, 32f, serial)
NOX_NORM2_C3C(noxiNormRel_L1_32f_C3CMR, NormRel, L1, 32f, serial)
NOX_NORM2_C1(noxiNormRel_L2_8u_C1MR, NormRel, L2, 8u, from17)
NOX_NORM2_C3C(noxiNormRel_L2_8u_C3CMR, NormRel, L2, 8u, from17OnCores)
NOX_NORM2_C1(noxiNormRel_L2_8s_C1MR, NormRel, L2, 8s, from17)
NOX_NORM2_C3C(noxiNormRel_L2_8s_C3CMR, NormRel, L2, 8s, from17OnCores)
NOX_NORM2_C1(noxiNormRel_L2_16u_C1MR, NormRel, L2, 16u, from17OnCores)
NOX_NORM2_C3C(noxiNormRel_L2_16u_C3CMR, NormRel, L2, 16u, from17)
NOX_NORM2_C1(noxiNormRel_L2_32f_C1MR, NormRel, L2, 32f, serial)
NOX_NORM2_C3C(noxiNormRel_L2_32f_C3CMR, NormRel, L2, 32f, serial)
