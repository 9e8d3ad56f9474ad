#pragma once

/// Functions that give the same bits on every machine. They consist of single additions, multiplications and divisions
/// in a fixed order; the C library's functions may differ in the last bit. Errors are a few units in the last place.
namespace BP::tool {

/// exp(x) for x <= 0; 0 if the result is below the range of normal numbers.
double exponential(double x);

/// cos(2 pi t) for a finite t, which counts turns.
double cosineOfTurns(double t);

}  // namespace BP::tool
