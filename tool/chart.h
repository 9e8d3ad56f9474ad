#pragma once

#include "tool/image.h"

namespace BP::tool {

constexpr int minChartWidth = 128;
constexpr int minChartHeight = 96;
constexpr int maxChartSide = 16384;

/// A test chart in grey of 8 bits: the same size gives the same samples on every machine.
///
///     +------------+---------+   zone plate: rings from constant in the middle to one black and one white pixel in
///     |            |  wedge  |     turn at the ends of its longer axis; filters show their frequency response
///     |    zone    +---------+   wedge: lines that converge from left to right, to a period of two pixels
///     |   plate    |  text   |   text: hard edges and corners in several sizes
///     |            +---------+   noise: a gradient with 5 % black and 5 % white pixels
///     |            |  noise  |   gradient: black to white, above without and below in 16 steps
///     +------------+---------+
///     |       gradient       |
///     +----------------------+
///
/// The width is `minChartWidth` to `maxChartSide`, the height `minChartHeight` to `maxChartSide`.
Image drawChart(int width, int height);

}  // namespace BP::tool
