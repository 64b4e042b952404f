// Image statistics. "read_C1" and its kin are a plain vector sum of the bytes that a member reads: the base of its
// figures.
#include "bench.h"
#include "noxcv.h"
#include "reference/statistics.h"
#include "tiers.h"

namespace {

volatile unsigned sink;

/// Sums 32-bit words as fast as they can be read, with explicit vectors since this program's loops are compiled as
/// plain ones.
NOX_TIERS unsigned vectorSum(const unsigned char *bytes, std::size_t count) {
    using Words = unsigned __attribute__((vector_size(32)));
    Words sums[4] = {};
    std::size_t i = 0;
    for (; i + sizeof(sums) <= count; i += sizeof(sums))
#pragma GCC unroll 4 // else the sums live in memory
        for (int k = 0; k < 4; ++k) {
            Words words;
            __builtin_memcpy(&words, bytes + i + sizeof(words) * k, sizeof(words));
            sums[k] += words;
        }
    const Words sum = (sums[0] + sums[1]) + (sums[2] + sums[3]);
    unsigned total = 0;
    for (int lane = 0; lane < 8; ++lane)
        total += sum[lane];
    return total;
}

void addRead(const char *name, int bytes) {
    bench::add({name, double(bytes), 0, false, [bytes](NoxiSize size) -> bench::Work {
                    const auto image = bench::picture<Nox8u>(size, bytes);
                    return {[=] { sink = vectorSum(image.data(), image.count()); }, {}};
                }});
}

template <class T>
struct Pictures {
    explicit Pictures(NoxiSize size, int channels)
        : a(bench::picture<T>(size, channels, 1)), b(bench::picture<T>(size, channels, 2)),
          mask(bench::picture<Nox8u>(size, 1, 3)), channels(channels) {
        for (std::size_t i = 0; i < mask.count(); ++i)
            mask.data()[i] = mask.data()[i] % 4 == 0 ? 0 : 255;
    }
    reference::statistics::Channel<T> first() const { return {a.data(), a.step(), channels, channels == 1 ? 0 : 1}; }
    reference::statistics::Channel<T> second() const { return {b.data(), b.step(), channels, channels == 1 ? 0 : 1}; }
    reference::statistics::Mask on() const { return {mask.data(), mask.step()}; }

    bench::Image<T> a, b;
    bench::Image<Nox8u> mask;
    int channels;
};

struct Results {
    Nox64f value, deviation;
    Nox32f low, high;
    NoxiPoint lowAt, highAt;
};

/// Registers a member that reads `images` images, and the mask perhaps.
template <class T, class Run, class Plain>
void addMember(const char *name, int channels, int images, bool masked, Run run, Plain plain) {
    bench::add({name, double(int(sizeof(T)) * channels * images + (masked ? 1 : 0)), 0, true,
                [=](NoxiSize size) -> bench::Work {
                    const Pictures<T> p(size, channels);
                    return {[=] {
                                Results r = {};
                                run(p, size, r);
                                bench::keep(r);
                            },
                            [=] {
                                plain(p, masked ? p.on() : reference::statistics::Mask{nullptr, 0}, size);
                            }};
                }});
}

template <reference::statistics::Form form, reference::statistics::Norm norm>
constexpr auto plainNorm = [](const auto &p, reference::statistics::Mask mask, NoxiSize size) {
    double value = 0;
    reference::statistics::norm(form, norm, p.first(), p.second(), mask, size, 1, &value);
    sink = unsigned(value);
};

constexpr auto plainMean = [](const auto &p, reference::statistics::Mask mask, NoxiSize size) {
    double mean = 0, deviation = 0;
    reference::statistics::meanAndDeviation(p.first(), mask, size, 1, &mean, &deviation);
    sink = unsigned(deviation);
};

constexpr auto plainExtrema = [](const auto &p, reference::statistics::Mask mask, NoxiSize size) {
    sink = unsigned(reference::statistics::extrema(p.first(), mask, size).low);
};

// A member's call, with the pictures p and the results r at hand.
#define CALL(...) [](const auto &p, NoxiSize size, Results &r) { __VA_ARGS__; }
#define A p.a.data(), p.a.step()
#define B p.b.data(), p.b.step()
#define M p.mask.data(), p.mask.step()

#define ADD_NORM(FORM, NORM, TAG, IMAGES, ...)                                                                         \
    addMember<Nox##TAG>("noxi" #FORM "_" #NORM "_" #TAG "_C1MR", 1, IMAGES, true,                                      \
                        CALL(noxi##FORM##_##NORM##_##TAG##_C1MR(__VA_ARGS__, M, size, &r.value)),                      \
                        plainNorm<reference::statistics::Form::FORM, reference::statistics::Norm::NORM>);              \
    addMember<Nox##TAG>("noxi" #FORM "_" #NORM "_" #TAG "_C3CMR", 3, IMAGES, true,                                     \
                        CALL(noxi##FORM##_##NORM##_##TAG##_C3CMR(__VA_ARGS__, M, size, 2, &r.value)),                  \
                        plainNorm<reference::statistics::Form::FORM, reference::statistics::Norm::NORM>);
#define ADD_NORMS(NORM, TAG)                                                                                           \
    ADD_NORM(Norm, NORM, TAG, 1, A)                                                                                    \
    ADD_NORM(NormDiff, NORM, TAG, 2, A, B)                                                                             \
    ADD_NORM(NormRel, NORM, TAG, 2, A, B)
#define ADD(NAME, TAG, CHANNELS, MASKED, PLAIN, ...)                                                                   \
    addMember<Nox##TAG>("noxi" #NAME, CHANNELS, 1, MASKED, CALL(noxi##NAME(__VA_ARGS__)), PLAIN);
#define EXTREMA &r.low, &r.high, &r.lowAt, &r.highAt
#define ADD_ALL(TAG)                                                                                                   \
    ADD_NORMS(Inf, TAG)                                                                                                \
    ADD_NORMS(L1, TAG)                                                                                                 \
    ADD_NORMS(L2, TAG)                                                                                                 \
    ADD(Mean_##TAG##_C1MR, TAG, 1, true, plainMean, A, M, size, &r.value)                                              \
    ADD(Mean_##TAG##_C3CMR, TAG, 3, true, plainMean, A, M, size, 2, &r.value)                                          \
    ADD(Mean_StdDev_##TAG##_C1R, TAG, 1, false, plainMean, A, size, &r.value, &r.deviation)                            \
    ADD(Mean_StdDev_##TAG##_C3CR, TAG, 3, false, plainMean, A, size, 2, &r.value, &r.deviation)                        \
    ADD(Mean_StdDev_##TAG##_C1MR, TAG, 1, true, plainMean, A, M, size, &r.value, &r.deviation)                         \
    ADD(Mean_StdDev_##TAG##_C3CMR, TAG, 3, true, plainMean, A, M, size, 2, &r.value, &r.deviation)                     \
    ADD(MinMaxIndx_##TAG##_C1R, TAG, 1, false, plainExtrema, A, size, EXTREMA)                                         \
    ADD(MinMaxIndx_##TAG##_C3CR, TAG, 3, false, plainExtrema, A, size, 2, EXTREMA)                                     \
    ADD(MinMaxIndx_##TAG##_C1MR, TAG, 1, true, plainExtrema, A, M, size, EXTREMA)                                      \
    ADD(MinMaxIndx_##TAG##_C3CMR, TAG, 3, true, plainExtrema, A, M, size, 2, EXTREMA)

const bench::Registrar registrar([] {
    addRead("read_1", 1);
    addRead("read_2", 2);
    addRead("read_3", 3);
    addRead("read_4", 4);
    addRead("read_5", 5);
    addRead("read_6", 6);
    addRead("read_7", 7);
    addRead("read_9", 9);
    addRead("read_12", 12);
    addRead("read_13", 13);
    addRead("read_19", 19);
    addRead("read_25", 25);
    ADD_ALL(8u)
    ADD_ALL(8s)
    ADD_ALL(16u)
    ADD_ALL(32f)
});

} // namespace
