// Motion history: the time at which each pixel last moved (A. F. Bobick, J. W. Davis, 2001).
#include <bit>
#include <cstdint>

#include "checks.h"
#include "noxcv/motion.h"
#include "rows.h"

using namespace nox;

namespace {

/// An integer that orders as the float of these bits does.
NOX_INLINE std::int32_t orderKey(std::int32_t bits) { return (bits & 0x7fffffff) ^ (bits >> 31); }

/// Which entries have expired, told from their bit patterns: those below the limit in the order of the keys.
struct KeyOrder {
    std::int32_t limit;
    explicit KeyOrder(Nox32f oldest) : limit(orderKey(std::bit_cast<std::int32_t>(oldest))) {}
    NOX_INLINE bool expired(std::int32_t bits) const { return orderKey(bits) < limit; }
};

/// The same for a limit above zero: the keys of negative entries and their bit patterns are all negative.
struct RawOrder : KeyOrder {
    using KeyOrder::KeyOrder;
    NOX_INLINE bool expired(std::int32_t bits) const { return bits < limit; }
};

/// Floats against floats: what does not compare has expired.
struct FloatOrder {
    Nox32f limit;
    explicit FloatOrder(Nox32f oldest) : limit(oldest) {}
    NOX_INLINE bool expired(std::int32_t bits) const { return !(std::bit_cast<Nox32f>(bits) >= limit); }
};

/// Not zero; a not-a-number is neither below nor above zero, and does not move.
template <class T>
NOX_INLINE bool moves(T silhouette) {
    return silhouette < 0 || silhouette > 0;
}

template <class T, class Order>
NOX_INLINE void updateRows(Rows<const T> silhouette, Rows<Nox32s> mhi, NoxiSize roi, Nox32f timestamp, Order order) {
    const auto now = std::bit_cast<Nox32s>(timestamp);
    for (int y = 0; y < roi.height; ++y) {
        const Element<T> *s = silhouette[y];
        Element<Nox32s> *m = mhi[y];
// The images do not overlap, and the compiler need not test for that.
#pragma GCC ivdep
        for (int x = 0; x < roi.width; ++x) {
            const Nox32s entry = m[x];
            const Nox32s kept = order.expired(entry) ? 0 : entry;
            m[x] = moves<T>(s[x]) ? now : kept;
        }
    }
}

template <class T>
NoxStatus checkHistory(const T *silhouette, int silhouetteStep, const Nox32f *mhi, int mhiStep, NoxiSize roi,
                       Nox32f duration) {
    return firstFailure(checkPointers(silhouette, mhi), checkSize(roi), checkStep<T>(silhouetteStep, roi.width),
                        checkStep<Nox32f>(mhiStep, roi.width),
                        firstFailure(checkEvenSteps<T>(silhouetteStep), checkEvenSteps<Nox32f>(mhiStep)),
                        require(duration >= 0, noxStsOutOfRange));
}

} // namespace

// One line per kernel, and one per member.
#define NOX_UPDATE(TYPE, ORDER, KERNEL)                                                                                \
    NOX_TIERS static void KERNEL(const TYPE *silhouette, int silhouetteStep, Nox32f *mhi, int mhiStep, NoxiSize roi,   \
                                 Nox32f timestamp, Nox32f oldest) {                                                    \
        updateRows<TYPE>({silhouette, silhouetteStep}, {reinterpret_cast<Nox32s *>(mhi), mhiStep}, roi, timestamp,     \
                         ORDER(oldest));                                                                               \
    }
NOX_UPDATE(Nox8u, RawOrder, updateRaw_8u32f)
NOX_UPDATE(Nox8u, KeyOrder, updateKeys_8u32f)
NOX_UPDATE(Nox16u, RawOrder, updateRaw_16u32f)
NOX_UPDATE(Nox16u, KeyOrder, updateKeys_16u32f)
NOX_UPDATE(Nox32f, FloatOrder, update_32f)

#define NOX_MOTION_HISTORY(NAME, TYPE, ...)                                                                            \
    NoxStatus NAME(const TYPE *silhouette, int silhouetteStep, Nox32f *mhi, int mhiStep, NoxiSize roi,                 \
                   Nox32f timestamp, Nox32f duration) {                                                                \
        const NoxStatus status = checkHistory(silhouette, silhouetteStep, mhi, mhiStep, roi, duration);                \
        if (status != noxStsNoError)                                                                                   \
            return status;                                                                                             \
        const Nox32f oldest = timestamp - duration;                                                                    \
        __VA_ARGS__(silhouette, silhouetteStep, mhi, mhiStep, roi, timestamp, oldest);                                 \
        return noxStsNoError;                                                                                          \
    }
#define NOX_BY_SIGN(TAG)                                                                                               \
    if (std::bit_cast<std::int32_t>(oldest) <= 0)                                                                      \
        updateKeys_##TAG(silhouette, silhouetteStep, mhi, mhiStep, roi, timestamp, oldest);                            \
    else                                                                                                               \
        updateRaw_##TAG
NOX_MOTION_HISTORY(noxiUpdateMotionHistory_8u32f_C1IR, Nox8u, NOX_BY_SIGN(8u32f))
NOX_MOTION_HISTORY(noxiUpdateMotionHistory_16u32f_C1IR, Nox16u, NOX_BY_SIGN(16u32f))
NOX_MOTION_HISTORY(noxiUpdateMotionHistory_32f_C1IR, Nox32f, update_32f)
