#include "image/kernels.h"

#include <cmath>

namespace vsm {

namespace {

float PositiveCube(float v) { return v > 0 ? v * v * v : 0.0f; }

}  // namespace

float BSplineWeight(float t) {
  if (t > 2) return 0;
  float sum = PositiveCube(t + 2);
  sum = std::fma(-4.0f, PositiveCube(t + 1), sum);
  sum = std::fma(6.0f, PositiveCube(t), sum);
  sum = std::fma(-4.0f, PositiveCube(t - 1), sum);
  return sum * 0.16666667f;
}

float CubicWeight(float t) {
  const float u = std::fabs(t);
  if (u < 1) {
    const float sum = std::fma(-2 * u, u, 1.0f);
    return std::fma(u * u, u, sum);
  }
  if (u < 2) {
    float sum = std::fma(-8.0f, u, 4.0f);
    sum = std::fma(5 * u, u, sum);
    return std::fma(-(u * u), u, sum);
  }
  return 0;
}

float KeysWeight(float t, float a) {
  const float u = std::fabs(t);
  if (u < 1) {
    const float sum = std::fma(-((a + 3) * u), u, (a + 2) * u * u * u);
    return sum + 1;
  }
  if (u < 2) {
    float sum = std::fma(-(5 * a * u), u, a * u * u * u);
    sum = std::fma(8 * a, u, sum);
    return sum - 4 * a;
  }
  return 0;
}

double FloatRemainder(double a, double b) { return a - b * TruncToInt(a / b); }

}  // namespace vsm
