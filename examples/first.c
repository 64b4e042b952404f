/* |a - b| of two images of 3 x 2 pixels. */
#include <noxcv.h>
#include <stdio.h>

int main(void) {
    const Nox8u a[6] = {10, 20, 30, 40, 50, 60}, b[6] = {12, 18, 30, 45, 40, 60};
    Nox8u difference[6];
    const NoxiSize roi = {3, 2}; /* columns, rows; the steps from row to row are in bytes */
    const NoxStatus status = noxiAbsDiff_8u_C1R(a, 3, b, 3, difference, 3, roi);
    for (int i = 0; i < 6; ++i)
        printf(i < 5 ? "%d " : "%d\n", difference[i]);
    printf("%s: %s\n", noxStatusName(status), noxStatusText(status));
    return status == noxStsNoError ? 0 : 1;
}
