// The image kit's geometry, filter and tone operations on a 6000 x 4000 24-bit picture, beside
// libvips on one thread (no operation cache) and Pillow, measured in the same run:
//   quarter turn:   RotateClockwise; vips_rot; Pillow's transpose;
//   30 degrees:     Rotate, bilinear, grown to the bounding box; vips_rotate with the bilinear
//                   interpolator; Pillow's rotate with expand;
//   3 x 3 filter:   Convolve with 1 2 1 / 2 4 2 / 1 2 1 over 16; vips_conv at integer precision;
//                   Pillow's Kernel filter;
//   grey:           ToGrey of the whole picture; vips_recomb with the same weights, cast to
//                   bytes; Pillow's conversion to L.
// Times are processor seconds of the process (libvips's worker included), so other load on the
// machine doesn't tilt the ratios. Pillow runs in a child process that times the operation alone.
#include "bench/image_baselines.h"

namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;

// Diagonal bands with a little noise, made once.
vsm::CImage& Source() {
  static vsm::CImage* source = [] {
    auto* image = new vsm::CImage;
    image->Create(kWidth, kHeight, image->GetInfo(), 24);
    uint32_t seed = 7;
    for (int32_t y = 0; y < kHeight; ++y) {
      uint8_t* pixel = image->PixelAddress24(0, y);
      for (int32_t x = 0; x < kWidth * 3; ++x) {
        seed = seed * 1664525 + 1013904223;
        pixel[x] = static_cast<uint8_t>((x / 3 + y) / 8 * (1 + x % 3) + (seed >> 29));
      }
    }
    return image;
  }();
  return *source;
}

template <typename Operation>
void Kit(benchmark::State& state, Operation operation) {
  vsm::bench::RunKit(state, Source(), operation);
}

void BM_KitRotateClockwise(benchmark::State& state) {
  Kit(state, [](vsm::CImage& image) { return image.RotateClockwise(); });
}

void BM_KitRotate30Bilinear(benchmark::State& state) {
  Kit(state, [](vsm::CImage& image) { return image.Rotate(2, 1, nullptr, false, 30); });
}

void BM_KitConvolve3x3(benchmark::State& state) {
  static const int32_t kBlur[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
  Kit(state, [](vsm::CImage& image) { return image.Convolve(kBlur, 3, 16, 0); });
}

void BM_KitToGrey(benchmark::State& state) {
  Kit(state, [](vsm::CImage& image) {
    return image.ToGrey(vsm::ImageRect{0, 0, -1, -1}, nullptr);
  });
}

template <typename Operation>
void Vips(benchmark::State& state, Operation operation) {
  static VipsImage* source = vsm::bench::VipsPicture(Source());
  vsm::bench::RunVips(state, source, operation);
}

void BM_VipsRot90(benchmark::State& state) {
  Vips(state,
       [](VipsImage* in, VipsImage** out) { return vips_rot(in, out, VIPS_ANGLE_D90, nullptr); });
}

void BM_VipsRotate30Bilinear(benchmark::State& state) {
  VipsInterpolate* bilinear = vips_interpolate_new("bilinear");
  Vips(state, [bilinear](VipsImage* in, VipsImage** out) {
    return vips_rotate(in, out, 30, "interpolate", bilinear, nullptr);
  });
  g_object_unref(bilinear);
}

void BM_VipsConv3x3(benchmark::State& state) {
  VipsImage* mask = vips_image_new_matrixv(3, 3, 1.0, 2.0, 1.0, 2.0, 4.0, 2.0, 1.0, 2.0, 1.0);
  vips_image_set_double(mask, "scale", 16);
  Vips(state, [mask](VipsImage* in, VipsImage** out) {
    return vips_conv(in, out, mask, "precision", VIPS_PRECISION_INTEGER, nullptr);
  });
  g_object_unref(mask);
}

void BM_VipsGrey(benchmark::State& state) {
  // Blue, green, red weights of 117, 601 and 306 over 1024.
  VipsImage* weights = vips_image_new_matrixv(3, 1, 117 / 1024.0, 601 / 1024.0, 306 / 1024.0);
  Vips(state, [weights](VipsImage* in, VipsImage** out) {
    VipsImage* sum = nullptr;
    if (vips_recomb(in, &sum, weights, nullptr) != 0) return -1;
    const int result = vips_cast(sum, out, VIPS_FORMAT_UCHAR, nullptr);
    g_object_unref(sum);
    return result;
  });
  g_object_unref(weights);
}

void Pillow(benchmark::State& state, const char* operation) {
  static vsm::bench::PictureFile file(Source());
  vsm::bench::RunPillow(state, file, operation);
}

void BM_PillowTranspose(benchmark::State& state) { Pillow(state, "cw"); }
void BM_PillowRotate30Bilinear(benchmark::State& state) { Pillow(state, "rotate"); }
void BM_PillowKernel3x3(benchmark::State& state) { Pillow(state, "blur"); }
void BM_PillowGrey(benchmark::State& state) { Pillow(state, "grey"); }

}  // namespace

VSM_IMAGE_BENCH(BM_KitRotateClockwise);
VSM_IMAGE_BENCH(BM_VipsRot90);
VSM_IMAGE_BENCH(BM_PillowTranspose);
VSM_IMAGE_BENCH(BM_KitRotate30Bilinear);
VSM_IMAGE_BENCH(BM_VipsRotate30Bilinear);
VSM_IMAGE_BENCH(BM_PillowRotate30Bilinear);
VSM_IMAGE_BENCH(BM_KitConvolve3x3);
VSM_IMAGE_BENCH(BM_VipsConv3x3);
VSM_IMAGE_BENCH(BM_PillowKernel3x3);
VSM_IMAGE_BENCH(BM_KitToGrey);
VSM_IMAGE_BENCH(BM_VipsGrey);
VSM_IMAGE_BENCH(BM_PillowGrey);
