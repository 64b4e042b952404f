#include <climits>
#include <cstdint>
#include <limits>

#include "frame/noxvworkbuffer.h"
#include "support/image.h"

namespace {

constexpr long long endless = std::numeric_limits<long long>::max();

struct Areas {
    Nox32f *row;
    Nox8u *flags;
    Nox64f *sums;

    Areas(nox::WorkBuffer &buffer, NoxiSize roi)
        : row(buffer.take<Nox32f>(roi.width)), flags(buffer.aligned(32).take<Nox8u>(roi.height)),
          sums(buffer.aligned(8).take<Nox64f>(static_cast<long long>(roi.width) * roi.height)) {}
};

TEST(WorkBuffer, MeasuresWhatItGivesOut) {
    for (const NoxiSize size : test::testSizes()) {
        nox::WorkBuffer measure;
        const Areas unused(measure, size);
        const long long flags = (4LL * size.width + 31) / 32 * 32, sums = (flags + size.height + 7) / 8 * 8;
        EXPECT_EQ(measure.bytes(), sums + 8LL * size.width * size.height);
        (void)unused;
        // Wherever the buffer lies, 31 bytes more than that suffice.
        for (int shift = 0; shift < 40; shift += 3) {
            test::ShiftedBuffer buffer(static_cast<int>(measure.bytes()) + 31, shift);
            nox::WorkBuffer work(buffer.data(), 32);
            const Areas areas(work, size);
            auto *const base = reinterpret_cast<unsigned char *>(areas.row);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(base) % 32, 0U);
            EXPECT_GE(base, buffer.data());
            EXPECT_LT(base, buffer.data() + 32);
            EXPECT_EQ(areas.flags, base + flags);
            EXPECT_EQ(reinterpret_cast<unsigned char *>(areas.sums), base + sums);
            EXPECT_EQ(work.bytes(), measure.bytes());
        }
    }
}

TEST(WorkBuffer, NothingIsTakenForNoLength) {
    nox::WorkBuffer measure;
    measure.take<Nox64f>(0);
    measure.take<Nox64f>(-5);
    measure.take<Nox64f>(std::numeric_limits<long long>::min());
    EXPECT_EQ(measure.bytes(), 0);
}

TEST(WorkBuffer, SizesStopAtTheLargestValue) {
    nox::WorkBuffer product, sum, rounded;
    product.take<Nox64f>(endless / 8 + 1);
    EXPECT_EQ(product.bytes(), endless);
    product.take<Nox8u>(1);
    EXPECT_EQ(product.bytes(), endless);
    sum.take<Nox8u>(endless);
    sum.take<Nox8u>(endless);
    EXPECT_EQ(sum.bytes(), endless);
    rounded.take<Nox8u>(endless - 5);
    rounded.aligned(32);
    EXPECT_EQ(rounded.bytes(), endless);
    EXPECT_EQ(nox::limitedSum(endless, 1), endless);
    EXPECT_EQ(nox::limitedProduct(1LL << 40, 1LL << 40), endless);
    EXPECT_EQ(nox::limitedProduct(1LL << 40, 3), 3LL << 40);
    EXPECT_EQ(nox::limitedSum(endless - 1, 1), endless);
}

TEST(WorkBuffer, SizesThatAnIntHoldsAreStored) {
    int size = 77;
    EXPECT_EQ(nox::storeSize(0, &size), noxStsNoError);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(nox::storeSize(INT_MAX, &size), noxStsNoError);
    EXPECT_EQ(size, INT_MAX);
    size = 77;
    for (const long long bytes : {INT_MAX + 1LL, 1LL << 32, (1LL << 32) + 5, endless, -1LL}) {
        EXPECT_EQ(nox::storeSize(bytes, &size), noxStsBadSize);
        EXPECT_EQ(nox::checkBufferBytes(bytes), noxStsBadSize);
        EXPECT_EQ(size, 77);
    }
}

} // namespace
