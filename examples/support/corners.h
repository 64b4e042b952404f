// Corners of a picture: peaks of the smaller eigenvalue of the gradient's covariance.
#pragma once

#include "picture.h"

struct Corner {
    int x, y;
    Nox32f response;
};

/// Corners at least `margin` pixels inside, the strongest first: at most `most`, and none with less than a hundredth of
/// the strongest response in the picture.
bool findCorners(const Picture &gray, int margin, int most, std::vector<Corner> &corners);
