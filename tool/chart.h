#pragma once

#include "tool/image.h"

namespace BP::tool {

constexpr int leastChartWidth = 128;
constexpr int leastChartHeight = 96;
constexpr int longestChartSide = 16384;

/// A test chart in grey of 8 bits: the same size gives the same samples on every machine.
///
///     +------------+---------+   zone plate: rings from constant in the middle to one black and one white pixel in
///     |            |  wedge  |     turn at the ends of its longer axis; filters show their frequency response
///     |    zone    +---------+   wedge: lines that close in from left to right, down to two pixels a line pair
///     |   plate    |  text   |   text: hard edges and corners in several sizes
///     |            +---------+   noise: a gradient of which 5 % of the pixels each are black and white
///     |            |  noise  |   gradient: black to white, above without and below in 16 steps
///     +------------+---------+
///     |       gradient       |
///     +----------------------+
///
/// The sides must be of `leastChartWidth` or `leastChartHeight` to `longestChartSide`.
Image drawChart(int width, int height);

}  // namespace BP::tool
