// vsmkit image OPs for the geometry operations and the normalised block.
#include "bmp_file.h"
#include "image_op_arguments.h"
#include "image_ops.h"

namespace vsmkit {

namespace {

bool Normalise(vsm::CImage&, const Arguments&) {
  // Loading has already brought the picture to the kit's plain form.
  return true;
}

bool Flip(vsm::CImage& image, const Arguments&) { return image.FlipRows(); }
bool Mirror(vsm::CImage& image, const Arguments&) { return image.MirrorColumns(); }
bool Clockwise(vsm::CImage& image, const Arguments&) { return image.RotateClockwise(); }
bool Counter(vsm::CImage& image, const Arguments&) { return image.RotateCounterClockwise(); }
bool Half(vsm::CImage& image, const Arguments&) { return image.RotateHalfTurn(); }

bool Turn(vsm::CImage& image, const Arguments& arguments) {
  return image.RotateRightAngle(ParseReal(arguments[0], "ANGLE"));
}

bool Rotate(vsm::CImage& image, const Arguments& arguments) {
  const bool given = arguments.size() > 4;
  const ColorBytes background(given ? ParseHexWord(arguments[4], "BACKGROUND") : 0);
  return image.Rotate(WholeArgument(arguments[1], "MODE"), WholeArgument(arguments[2], "OVERFLOW"),
                      given ? background.bytes : nullptr,
                      ParseDecimal(arguments[3], "KEEPSIZE", 0, 1) != 0,
                      RealArgument(arguments[0], "ANGLE"));
}

bool Crop(vsm::CImage& image, const Arguments& arguments) {
  return image.Crop(RectArgument(arguments, 0));
}

bool Extend(vsm::CImage& image, const Arguments& arguments) {
  return image.ExtendWidth(WholeArgument(arguments[0], "WIDTH"),
                           ParseHexWord(arguments[1], "COLORREF"));
}

bool Paste(vsm::CImage& image, const Arguments& arguments) {
  vsm::CImage other;
  LoadBmpImage(arguments[2], other);
  return image.Paste(WholeArgument(arguments[0], "X"), WholeArgument(arguments[1], "Y"),
                     other.GetDib());
}

const ImageOp kOps[] = {
    {"normalise", "", true, 0, 0, Normalise},
    {"flip", "", true, 0, 0, Flip},
    {"mirror", "", true, 0, 0, Mirror},
    {"cw", "", true, 0, 0, Clockwise},
    {"ccw", "", true, 0, 0, Counter},
    {"half", "", true, 0, 0, Half},
    {"turn", "ANGLE", true, 1, 1, Turn},
    {"rotate", "ANGLE MODE OVERFLOW KEEPSIZE [BACKGROUND]", true, 4, 5, Rotate},
    {"crop", "L T R B", true, 4, 4, Crop},
    {"extend", "WIDTH COLORREF", true, 2, 2, Extend},
    {"paste", "X Y OTHER.bmp", true, 3, 3, Paste},
};

}  // namespace

ImageOpList GeometryImageOps() { return {kOps, sizeof kOps / sizeof kOps[0]}; }

}  // namespace vsmkit
