#include "drawing.h"

#include <algorithm>
#include <cmath>

void plot(Picture &picture, int x, int y, Color color) {
    if (x >= 0 && y >= 0 && x < picture.size.width && y < picture.size.height)
        std::copy_n(color.data(), 3, picture.at(x, y));
}

void drawSegment(Picture &picture, NoxiPoint32f from, NoxiPoint32f to, Color color) {
    const float reach = std::max(std::fabs(to.x - from.x), std::fabs(to.y - from.y));
    const int steps = int(std::clamp(std::ceil(reach), 1.0F, 20000.0F));
    for (int i = 0; i <= steps; ++i) {
        const float share = float(i) / float(steps);
        plot(picture, int(std::lround(from.x + (to.x - from.x) * share)),
             int(std::lround(from.y + (to.y - from.y) * share)), color);
    }
}

void drawBox(Picture &picture, NoxiRect box, Color color) {
    for (int inset = 0; inset < 2; ++inset) {
        const float left = float(box.x + inset), right = float(box.x + box.width - 1 - inset);
        const float top = float(box.y + inset), bottom = float(box.y + box.height - 1 - inset);
        drawSegment(picture, {left, top}, {right, top}, color);
        drawSegment(picture, {left, bottom}, {right, bottom}, color);
        drawSegment(picture, {left, top}, {left, bottom}, color);
        drawSegment(picture, {right, top}, {right, bottom}, color);
    }
}

void drawDot(Picture &picture, NoxiPoint32f point, Color color) {
    for (int y = -1; y <= 1; ++y)
        for (int x = -1; x <= 1; ++x)
            plot(picture, int(point.x) + x, int(point.y) + y, color);
}
