
#include <cmath>

#include "noxcv.h"
#include "reference/accumulate.h"
#include "support/image.h"

namespace {

Nox32f arctanOf(Nox32f y, Nox32f x) {
    Nox32f angle = -1;
    EXPECT_EQ(noxibFastArctan_32f(&y, &x, &angle, 1), noxStsNoError);
    return angle;
}

TEST(FastArctan, EqualsReferenceForEveryLength) {
    test::Random random(1);
    const Nox32f specials[] = {0.0F, -0.0F, 1.0F, -1.0F, 1e-9F, -1e-9F, 1e-20F, 1e30F, -1e30F};
    for (int length = 1; length < 70; ++length) {
        const test::Buffer yBytes(4 * length), xBytes(4 * length), dBytes(4 * length);
        auto *y = reinterpret_cast<Nox32f *>(yBytes.data()), *x = reinterpret_cast<Nox32f *>(xBytes.data()),
             *d = reinterpret_cast<Nox32f *>(dBytes.data());
        for (int i = 0; i < length; ++i) {
            y[i] = random() % 4 == 0 ? specials[random() % 9] : test::randomElement<Nox32f>(random);
            x[i] = random() % 4 == 0 ? specials[random() % 9] : test::randomElement<Nox32f>(random);
        }
        ASSERT_EQ(noxibFastArctan_32f(y, x, d, length), noxStsNoError);
        for (int i = 0; i < length; ++i)
            ASSERT_TRUE(test::sameElement(d[i], reference::accumulate::arctan(y[i], x[i]))) << y[i] << ", " << x[i];
        ASSERT_EQ(noxibFastArctan_32f(y, x, y, length), noxStsNoError);
        for (int i = 0; i < length; ++i)
            ASSERT_TRUE(test::sameElement(d[i], y[i])) << "in place";
    }
}

TEST(FastArctan, AxesAndDiagonals) {
    const Nox32f constant = -0.14050041F;
    EXPECT_EQ(arctanOf(0, 0), constant);
    EXPECT_EQ(arctanOf(0, 1), constant);
    EXPECT_EQ(arctanOf(-0.0F, 1), constant);
    EXPECT_EQ(arctanOf(0, -0.0F), constant);
    EXPECT_EQ(arctanOf(1, 0), 90.0F - constant);
    EXPECT_EQ(arctanOf(0, -1), 180.0F - constant);
    EXPECT_EQ(arctanOf(-1, 0), 360.0F - (90.0F - constant));
    EXPECT_NEAR(arctanOf(1, 1), 45.14F, 0.01F);
}

TEST(FastArctan, IsCloseToTheAngle) {
    for (int i = 1; i < 3600; ++i) {
        const double angle = i / 10.0;
        const auto y = static_cast<Nox32f>(std::sin(angle * 3.14159265358979 / 180)),
                   x = static_cast<Nox32f>(std::cos(angle * 3.14159265358979 / 180));
        ASSERT_NEAR(arctanOf(y, x), angle, 0.3);
    }
}

TEST(FastArctan, StatusesInOrder) {
    Nox32f y = 1, x = 1, d = 77;
    EXPECT_EQ(noxibFastArctan_32f(nullptr, &x, &d, 0), noxStsNullPointer);
    EXPECT_EQ(noxibFastArctan_32f(&y, nullptr, &d, 0), noxStsNullPointer);
    EXPECT_EQ(noxibFastArctan_32f(&y, &x, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxibFastArctan_32f(&y, &x, &d, 0), noxStsBadSize);
    EXPECT_EQ(noxibFastArctan_32f(&y, &x, &d, -1), noxStsBadSize);
    EXPECT_EQ(d, 77);
}

} // namespace
