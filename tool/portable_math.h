#pragma once

/// Functions whose last bit is the same on every machine, unlike that of the C library's, as they are made of single
/// additions, multiplications and divisions in a fixed order. Errors are a few units in the last place.
namespace BP::tool {

/// exp(x) for x <= 0; 0 below the range of normal numbers.
double exponential(double x);

/// cos(2 pi t) for a finite t, in turns rather than radians.
double cosineOfTurns(double t);

}  // namespace BP::tool
