#include <functional>

#include "noxcv.h"
#include "ownprimitives.h"
#include "reference/elementwise.h"
#include "support/vector.h"

using test::Vector;

namespace {

template <class T>
struct Kernel {
    std::function<void(const T *, const T *, T *, int)> fromTwo;
    std::function<void(const T *, T *, int)> inPlace;
    std::function<T(T, T)> formula;
};

/// The 8-bit kernels, one entry a scale.
std::vector<Kernel<Nox8u>> byteKernels() {
    const auto formula = [](int scale) {
        return [scale](Nox8u a, Nox8u b) { return reference::elementwise::subtract(a, b, scale); };
    };
    std::vector<Kernel<Nox8u>> kernels = {{ownsSub_8u, ownsSub_8u_I, formula(0)},
                                          {ownsSub_8u_1Sfs, ownsSub_8u_I_1Sfs, formula(1)},
                                          {ownsSub_8u_Bound, ownsSub_8u_I_Bound, formula(-8)}};
    for (int shift = 2; shift <= 8; ++shift)
        kernels.push_back(
            {[=](const Nox8u *a, const Nox8u *b, Nox8u *d, int n) { ownsSub_8u_PosSfs(a, b, d, n, shift); },
             [=](const Nox8u *a, Nox8u *d, int n) { ownsSub_8u_I_PosSfs(a, d, n, shift); }, formula(shift)});
    for (int shift = 1; shift <= 7; ++shift)
        kernels.push_back(
            {[=](const Nox8u *a, const Nox8u *b, Nox8u *d, int n) { ownsSub_8u_NegSfs(a, b, d, n, shift); },
             [=](const Nox8u *a, Nox8u *d, int n) { ownsSub_8u_I_NegSfs(a, d, n, shift); }, formula(-shift)});
    return kernels;
}

Kernel<Nox32f> floatKernel() {
    return {ownsSub_32f, ownsSub_32f_I, [](Nox32f a, Nox32f b) { return b - a; }};
}

template <class T>
void expectEqualsReference(const Kernel<T> &kernel) {
    test::Random random(1);
    for (const int length : test::testLengths())
        for (const int shift : {0, 1, 4}) {
            Vector<T> a(length, shift), b(length, 16 - shift), expected(length), actual(length, 3);
            test::randomize(a, random);
            test::randomize(b, random);
            expected.generate([&](int i) { return kernel.formula(a[i], b[i]); });
            kernel.fromTwo(a.data(), b.data(), actual.data(), length);
            ASSERT_TRUE(test::sameVector(actual, expected));
            kernel.inPlace(a.data(), b.data(), length);
            ASSERT_TRUE(test::sameVector(b, expected));
        }
}

TEST(Sub, EqualsReference) {
    for (const auto &kernel : byteKernels())
        expectEqualsReference(kernel);
    expectEqualsReference(floatKernel());
}

TEST(Sub, EveryPairOfBytesAtEveryScale) {
    Vector<Nox8u> a(65536), b(65536), actual(65536);
    a.generate([](int i) { return i >> 8; });
    b.generate([](int i) { return i & 255; });
    for (const auto &kernel : byteKernels()) {
        kernel.fromTwo(a.data(), b.data(), actual.data(), 65536);
        for (int i = 0; i < 65536; ++i)
            ASSERT_EQ(actual[i], kernel.formula(a[i], b[i])) << i;
    }
}

TEST(Sub, OverlappingRangesGoInAscendingOrder) {
    test::Random random(2);
    for (const auto &kernel : byteKernels())
        for (const int distance : {-33, -1, 0, 1, 5, 31, 64}) {
            Vector<Nox8u> actual(300);
            test::randomize(actual, random);
            const Vector<Nox8u> expected(actual);
            const int first = 80, second = first + distance, length = 150;
            for (int i = 0; i < length; ++i)
                expected[second + i] = kernel.formula(expected[first + i], expected[second + i]);
            kernel.inPlace(actual.data() + first, actual.data() + second, length);
            ASSERT_TRUE(test::sameVector(actual, expected)) << distance;
        }
}

} // namespace
