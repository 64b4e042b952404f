// Frames of a made-up video: a textured background with noise and flicker, and something that moves over it.
#pragma once

#include "support/image.h"

namespace test {

/// Frame number t; frames are reproducible.
inline Image<Nox8u> videoFrame(NoxiSize size, int channels, int t, int padding = 0) {
    Image<Nox8u> frame(size.width, size.height, channels, padding);
    Random random(unsigned(t) * 7919U + 13U);
    const int left = t * 3 % (size.width + 8) - 8, top = t % (size.height + 6) - 6;
    return frame.generate([&](int x, int y, int c) {
        int value = (x * 37 + y * 59 + c * 83) % 200 + 20;
        if ((x + y) % 5 == 0)
            value += t % 2 * 40; // flickers
        if (x >= left && x < left + 8 && y >= top && y < top + 6)
            value = 250 - value;
        if ((x + 2 * y) % 7 == 0)
            value = t % 11 == 0 ? 0 : 3; // dark: close to the empty Gaussians
        return std::min(std::max(value + int(random() % 7) - 3 + t / 50, 0), 255);
    });
}

} // namespace test
