// The image kit's heavy operations on a 6000 x 4000 24-bit picture, beside libvips (one thread,
// no operation cache) and Pillow measured in the same run:
//   half size:  Scale(3000, 2000, bilinear), an integer area average; vips_reduce and
//               vips_resize with the linear kernel, vips_shrink (a box); Pillow's bilinear resize
//               and reduce(2);
//   1.5 times:  Scale(9000, 6000, B-spline); vips_resize with the cubic kernel; Pillow bicubic;
//   8 bits:     ReduceBitDepth(8) with error diffusion onto the standard palette; Pillow's
//               conversion to its web palette with Floyd-Steinberg (libvips has no counterpart).
// The picture is smooth with a little noise, like a photograph. Pillow runs in a child process
// (image_pillow_timing.py) that times the operation alone. Every time reported is the
// processor time of the process (libvips's worker thread included), not the wall clock, so that
// other load on the machine doesn't tilt the ratios.
#include <cmath>

#include "bench/image_baselines.h"

namespace {

using vsm::bench::RunKit;
using vsm::bench::RunPillow;
using vsm::bench::RunVips;

constexpr int32_t kWidth = 6000, kHeight = 4000;

// The picture as a packed DIB; made once.
const vsm::CImage& Picture() {
  static vsm::CImage* picture = [] {
    auto* image = new vsm::CImage;
    image->Create(kWidth, kHeight, image->GetInfo(), 24);
    uint32_t noise = 12345;
    for (int32_t y = 0; y < kHeight; ++y) {
      uint8_t* row = image->PixelAddress24(0, y);
      for (int32_t x = 0; x < kWidth; ++x, row += 3) {
        noise = noise * 1103515245 + 12345;
        const double wave = std::sin(x * 0.003) * std::cos(y * 0.002);
        const int jitter = static_cast<int>(noise >> 28) - 8;
        row[0] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, 128 + 100 * wave + jitter)));
        row[1] = static_cast<uint8_t>((x / 24 + y / 16 + jitter + 256) & 0xFF);
        row[2] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, y * 255.0 / kHeight + jitter)));
      }
    }
    return image;
  }();
  return *picture;
}

void BM_KitScaleHalfBilinear(benchmark::State& state) {
  RunKit(state, Picture(),
         [](vsm::CImage& image) { return image.Scale(kWidth / 2, kHeight / 2, 3); });
}

void BM_KitScaleUpBSpline(benchmark::State& state) {
  RunKit(state, Picture(),
         [](vsm::CImage& image) { return image.Scale(kWidth * 3 / 2, kHeight * 3 / 2, 2); });
}

void BM_KitReduceTo8Diffused(benchmark::State& state) {
  RunKit(state, Picture(),
         [](vsm::CImage& image) { return image.ReduceBitDepth(8, true, nullptr, 256); });
}

// --- libvips, one thread ---

VipsImage* VipsPicture() {
  static VipsImage* picture = vsm::bench::VipsPicture(Picture());
  return picture;
}

void BM_VipsReduceHalfLinear(benchmark::State& state) {
  RunVips(state, VipsPicture(), [](VipsImage* in, VipsImage** out) {
    return vips_reduce(in, out, 2.0, 2.0, "kernel", VIPS_KERNEL_LINEAR, nullptr);
  });
}

void BM_VipsResizeHalfLinear(benchmark::State& state) {
  RunVips(state, VipsPicture(), [](VipsImage* in, VipsImage** out) {
    return vips_resize(in, out, 0.5, "kernel", VIPS_KERNEL_LINEAR, nullptr);
  });
}

void BM_VipsShrinkHalf(benchmark::State& state) {
  RunVips(state, VipsPicture(),
          [](VipsImage* in, VipsImage** out) { return vips_shrink(in, out, 2.0, 2.0, nullptr); });
}

void BM_VipsResizeUpCubic(benchmark::State& state) {
  RunVips(state, VipsPicture(), [](VipsImage* in, VipsImage** out) {
    return vips_resize(in, out, 1.5, "kernel", VIPS_KERNEL_CUBIC, nullptr);
  });
}

// --- Pillow, in a child process that reports the seconds of the operation alone ---

const vsm::bench::PictureFile& PictureFile() {
  static vsm::bench::PictureFile file(Picture());
  return file;
}

void BM_PillowResizeHalfBilinear(benchmark::State& state) {
  RunPillow(state, PictureFile(), "half");
}
void BM_PillowReduceHalf(benchmark::State& state) { RunPillow(state, PictureFile(), "reduce"); }
void BM_PillowResizeUpBicubic(benchmark::State& state) { RunPillow(state, PictureFile(), "up"); }
void BM_PillowDitherToWebPalette(benchmark::State& state) {
  RunPillow(state, PictureFile(), "dither");
}

}  // namespace

VSM_IMAGE_BENCH(BM_KitScaleHalfBilinear);
VSM_IMAGE_BENCH(BM_VipsReduceHalfLinear);
VSM_IMAGE_BENCH(BM_VipsResizeHalfLinear);
VSM_IMAGE_BENCH(BM_VipsShrinkHalf);
VSM_IMAGE_BENCH(BM_PillowResizeHalfBilinear);
VSM_IMAGE_BENCH(BM_PillowReduceHalf);
VSM_IMAGE_BENCH(BM_KitScaleUpBSpline);
VSM_IMAGE_BENCH(BM_VipsResizeUpCubic);
VSM_IMAGE_BENCH(BM_PillowResizeUpBicubic);
VSM_IMAGE_BENCH(BM_KitReduceTo8Diffused);
VSM_IMAGE_BENCH(BM_PillowDitherToWebPalette);
