// Edges by Sobel derivatives and Canny's detector, with thresholds chosen from the picture.
#pragma once

#include "picture.h"

struct Derivatives {
    std::vector<Nox16s> dx, dy;
    int step;
};

struct EdgeThresholds {
    float low, high;
};

/// Horizontal and vertical Sobel derivatives with the edge pixels repeated outside.
bool differentiate(const Picture &gray, Derivatives &d);

/// The high threshold is the gradient magnitude that nine of ten pixels stay below, the low one 0.4 of it.
EdgeThresholds chosenThresholds(const Derivatives &d);

/// 255 on edges, 0 elsewhere; `edges` has the derivatives' size.
bool detectEdges(const Derivatives &d, EdgeThresholds thresholds, Picture &edges);
