// Interpolation kernels and the float helpers of the sampling code.
//
// The kernels are evaluated in 32-bit floats term by term from the left, and each term after the
// first is folded into the running sum by one fused multiply-add of its last factor. Their bytes
// downstream depend on exactly this rounding, so the image layer is built with contraction off
// and the fused steps are written out with std::fma.
#ifndef VSM_IMAGE_KERNELS_H_
#define VSM_IMAGE_KERNELS_H_

#include <cstdint>

namespace vsm {

// Cubic B-spline: (P(t + 2) - 4 P(t + 1) + 6 P(t) - 4 P(t - 1)) / 6 with P(v) = v^3 for v > 0,
// else 0; 0 for t > 2. BSplineWeight(0) is 0.6666667, BSplineWeight(1) 0.16666667.
float BSplineWeight(float t);
// With u = |t|: 1 - 2u^2 + u^3 below 1, 4 - 8u + 5u^2 - u^3 below 2, else 0.
float CubicWeight(float t);
// With u = |t|: (a + 2)u^3 - (a + 3)u^2 + 1 below 1, a u^3 - 5a u^2 + 8a u - 4a below 2, else 0.
float KeysWeight(float t, float a);
// a - b * q in 64-bit floats, with q = a / b truncated to a 32-bit signed integer.
double FloatRemainder(double a, double b);

// Truncation towards zero to 32 bits; NaN and values out of range give INT32_MIN, as the
// processor's own conversion does.
inline int32_t TruncToInt(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(value);
}

}  // namespace vsm

#endif  // VSM_IMAGE_KERNELS_H_
