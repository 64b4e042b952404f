// Callers of the older convention keep the stack aligned to 4 bytes only; every kind of kernel must survive that.
#include "noxcv.h"
#include "support/image.h"
#include "support/misaligned.h"
#include "support/threads.h"

using test::Image;

namespace {

constexpr int shifts[] = {0, 4, 8, 12};

/// Calls an entry directly and through stacks of every alignment: dst must come out the same each time.
template <class T, class Entry, class... Argument>
void expectSameResult(const Image<T> &dst, Entry *entry, Argument... arguments) {
    ASSERT_GE(entry(arguments...), noxStsNoError);
    const Image<T> expected(dst);
    for (const int shift : shifts) {
        const_cast<Image<T> &>(dst).fill(T(0));
        ASSERT_GE(test::callMisaligned(shift, entry, arguments...), noxStsNoError);
        ASSERT_TRUE(test::sameImage(dst, expected)) << "shift " << shift;
    }
}

struct Pictures {
    Image<Nox8u> bytes{301, 97};
    Image<Nox32f> floats{301, 97};
    NoxiSize roi{301, 97};
    test::Buffer buffer{1 << 20};

    Pictures() {
        test::Random random(1);
        test::randomize(bytes, random);
        test::randomize(floats, random);
    }
};

TEST(MisalignedStack, ElementwiseKernels) {
    const Pictures p;
    const Image<Nox32f> other(p.floats), dst(301, 97);
    expectSameResult(dst, noxiAbsDiff_32f_C1R, p.floats.data(), p.floats.step(), other.data(), other.step(), dst.data(),
                     dst.step(), p.roi);
    const Image<Nox8u> small(301, 97);
    expectSameResult(small, noxiThreshold_GTVal_8u_C1R, p.bytes.data(), p.bytes.step(), small.data(), small.step(),
                     p.roi, 100, 7);
}

TEST(MisalignedStack, BorderFilters) {
    const Pictures p;
    const Image<Nox16s> words(301, 97);
    expectSameResult(words, noxiFilterSobelVertBorder_8u16s_C1R, p.bytes.data(), p.bytes.step(), words.data(),
                     words.step(), p.roi, int(noxMskSize5x5), int(noxBorderMirror), 0, p.buffer.data());
    const Image<Nox32f> floats(301, 97);
    expectSameResult(floats, noxiFilterLowpassBorder_32f_C1R, p.floats.data(), p.floats.step(), floats.data(),
                     floats.step(), p.roi, int(noxMskSize3x3), int(noxBorderReplicate), 0.0F, p.buffer.data());
}

TEST(MisalignedStack, Canny) {
    const Image<Nox16s> dx(301, 97), dy(301, 97);
    test::Random random(2);
    for (const auto *image : {&dx, &dy})
        const_cast<Image<Nox16s> *>(image)->generate([&](int, int, int) { return int(random() % 81) - 40; });
    const Image<Nox8u> edges(301, 97);
    const test::Buffer buffer(1 << 20);
    expectSameResult(edges, noxiCanny_16s8u_C1R, dx.data(), dx.step(), dy.data(), dy.step(), edges.data(), edges.step(),
                     edges.roi(), 10.0F, 30.0F, buffer.data());
}

TEST(MisalignedStack, GaussianSampling) {
    const Pictures p;
    const Image<Nox32f> half(151, 49);
    expectSameResult(half, noxiPyrDown_Gauss5x5_32f_C1R, p.floats.data(), p.floats.step(), half.data(), half.step(),
                     p.roi, p.buffer.data());
}

TEST(MisalignedStack, ParallelReduction) {
    // Large enough to go parallel: the runtime's threads start from a misaligned frame too.
    const test::ThreadCount threads(2);
    const Image<Nox8u> image(1024, 512), mask(1024, 512);
    test::Random random(3);
    test::randomize(const_cast<Image<Nox8u> &>(image), random);
    test::randomize(const_cast<Image<Nox8u> &>(mask), random);
    const Image<Nox64f> norm(1, 1);
    expectSameResult(norm, noxiNorm_L2_8u_C1MR, image.data(), image.step(), mask.data(), mask.step(), image.roi(),
                     norm.data());
}

} // namespace
