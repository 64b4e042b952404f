/* The public headers as a C99 caller sees them: one include, one call into each library. */
#include <noxcv.h>

#include <stdio.h>
#include <string.h>

int main(void) {
    const NoxLibraryVersion *version = noxcvGetLibVersion();
    const Nox8u a[4] = {1, 2, 3, 4}, b[4] = {4, 4, 4, 4};
    Nox8u difference[4];
    const NoxiSize roi = {2, 2};
    int threads = 0;
    if (noxGetNumThreads(&threads) != noxStsNoError || threads < 1)
        return 1;
    if (noxiAbsDiff_8u_C1R(a, 2, b, 2, difference, 2, roi) != noxStsNoError || difference[0] != 3)
        return 2;
    if (strcmp(version->name, "libnoxcva6.so.5.2") != 0)
        return 3;
    printf("%s %d.%d.%d.%d of %s\n", version->name, version->major, version->minor, version->majorBuild, version->build,
           version->buildDate);
    return 0;
}
