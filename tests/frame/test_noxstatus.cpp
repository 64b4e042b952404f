#include <cstring>

#include "noxcv.h"
#include "support/image.h"

namespace {

// Every value that the enumeration names; the compiler warns of one that the header's switches leave out.
constexpr NoxStatus all[] = {noxStsUnsupportedMode,
                             noxStsOddStep,
                             noxStsBadMetric,
                             noxStsBadChannelCount,
                             noxStsBadChannelOfInterest,
                             noxStsBadAnchor,
                             noxStsBadMaskSize,
                             noxStsBadStep,
                             noxStsBadDataType,
                             noxStsOutOfRange,
                             noxStsNoMemory,
                             noxStsNullPointer,
                             noxStsBadSize,
                             noxStsBadArgument,
                             noxStsBadLine,
                             noxStsNoError,
                             noxStsSqrtOfNegative,
                             noxStsDivideByZero,
                             noxStsBufferSizeWarning,
                             noxStsLinesTruncated,
                             noxStsKernelNotSymmetric};

TEST(Status, EachHasANameAndASentenceOfItsOwn) {
    for (const NoxStatus status : all) {
        EXPECT_EQ(std::strncmp(noxStatusName(status), "noxSts", 6), 0) << status;
        EXPECT_EQ(noxStatusText(status)[std::strlen(noxStatusText(status)) - 1], '.') << status;
        for (const NoxStatus other : all) {
            if (other == status)
                continue;
            EXPECT_STRNE(noxStatusName(status), noxStatusName(other));
            EXPECT_STRNE(noxStatusText(status), noxStatusText(other));
        }
    }
    EXPECT_STREQ(noxStatusName(noxStsNoError), "noxStsNoError");
    EXPECT_STREQ(noxStatusName(noxStsBadStep), "noxStsBadStep");
    EXPECT_STREQ(noxStatusName(static_cast<NoxStatus>(12345)), "unknown status");
}

TEST(Status, VersionOfTheHeadersIsThatOfTheLibrary) {
    const NoxLibraryVersion *version = noxcvGetLibVersion();
    EXPECT_EQ(version->major, NOXCV_VERSION_MAJOR);
    EXPECT_EQ(version->minor, NOXCV_VERSION_MINOR);
    EXPECT_EQ(version->majorBuild, NOXCV_VERSION_MAJOR_BUILD);
    EXPECT_EQ(version->build, NOXCV_VERSION_BUILD);
    EXPECT_STREQ(version->version, NOXCV_VERSION);
}

} // namespace
