// Callers of the older convention keep the stack aligned to 4 bytes only; every kind of kernel must survive that.
#include "noxcv.h"
#include "reference/absdiff.h"
#include "support/image.h"

// The address sanitizer keeps its own books of an aligned stack, so its build leaves this test out.
#if defined(__i386__) && !defined(__SANITIZE_ADDRESS__)
#include "support/misaligned.h"

namespace {

TEST(MisalignedStack, AbsoluteDifferences) {
    for (const int shift : {0, 4, 8, 12}) {
        test::Random random(shift);
        test::Image<Nox32f> a(101, 7), b(101, 7), actual(101, 7), expected(101, 7);
        test::randomize(a, random);
        test::randomize(b, random);
        reference::absDiff(a.data(), a.step(), b.data(), b.step(), expected.data(), expected.step(), a.roi());
        ASSERT_EQ(test::callMisaligned(shift, noxiAbsDiff_32f_C1R, a.data(), a.step(), b.data(), b.step(),
                                       actual.data(), actual.step(), a.roi()),
                  noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, expected));
    }
}

} // namespace
#endif
