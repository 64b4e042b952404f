// Points, segments and boxes on colour pictures. What lies outside the picture is left out.
#pragma once

#include <array>

#include "picture.h"

using Color = std::array<Nox8u, 3>;

constexpr Color green = {40, 230, 60}, red = {235, 50, 40}, yellow = {250, 220, 40};

void plot(Picture &picture, int x, int y, Color color);

/// A segment, both ends included.
void drawSegment(Picture &picture, NoxiPoint32f from, NoxiPoint32f to, Color color);

/// A frame two pixels wide along the inside of a rectangle.
void drawBox(Picture &picture, NoxiRect box, Color color);

/// A square of 3 x 3 pixels about a point.
void drawDot(Picture &picture, NoxiPoint32f point, Color color);
