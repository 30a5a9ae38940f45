// FloatPoint and FloatRect: small value types in 32-bit floats for the sampling and geometry
// code. A rect's bottom is the larger of its two y values.
#ifndef VSM_IMAGE_FLOAT_GEOMETRY_H_
#define VSM_IMAGE_FLOAT_GEOMETRY_H_

#include <algorithm>
#include <cmath>

namespace vsm {

struct FloatPoint {
  FloatPoint() : x(0), y(0) {}
  FloatPoint(float xValue, float yValue) : x(xValue), y(yValue) {}

  float Distance(const FloatPoint& other) const { return Distance(other.x, other.y); }
  float Distance(float toX, float toY) const {
    const float dx = x - toX;
    const float dy = y - toY;
    return std::sqrt(dx * dx + dy * dy);
  }

  float x;
  float y;
};

struct FloatRect {
  FloatRect() : left(0), top(0), right(0), bottom(0) {}
  FloatRect(float l, float t, float r, float b) : left(l), top(t), right(r), bottom(b) {}

  float Width() const { return right - left; }
  float Height() const { return bottom - top; }
  float Surface() const { return (right - left) * (bottom - top); }
  FloatPoint Centre() const { return FloatPoint((left + right) / 2, (top + bottom) / 2); }
  // The larger left and top and the smaller right and bottom; all zero when nothing is shared.
  FloatRect Intersect(const FloatRect& other) const {
    FloatRect shared(std::max(left, other.left), std::max(top, other.top),
                     std::min(right, other.right), std::min(bottom, other.bottom));
    if (shared.left > shared.right || shared.top > shared.bottom) return FloatRect();
    return shared;
  }

  float left;
  float top;
  float right;
  float bottom;
};

}  // namespace vsm

#endif  // VSM_IMAGE_FLOAT_GEOMETRY_H_
