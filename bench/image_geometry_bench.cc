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
#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>
#include <vips/vips.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "image/image.h"

namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;

double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

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

// Times `operation` on a fresh copy of the picture per iteration.
void Kit(benchmark::State& state, const std::function<bool(vsm::CImage&)>& operation) {
  for (auto _ : state) {
    vsm::CImage image(Source().GetDib());
    const double start = CpuSeconds();
    if (!operation(image)) state.SkipWithError("the kit refused");
    state.SetIterationTime(CpuSeconds() - start);
  }
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

// The picture's rows as a vips image; rows of 6000 pixels need no padding.
VipsImage* VipsSource() {
  static VipsImage* image = [] {
    if (VIPS_INIT("image_geometry_bench") != 0) return static_cast<VipsImage*>(nullptr);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    const vsm::ImageInfo& info = *Source().GetInfo();
    return vips_image_new_from_memory(info.bits, info.imageSize, kWidth, kHeight, 3,
                                      VIPS_FORMAT_UCHAR);
  }();
  return image;
}

// Times building and computing `operation`'s output into memory.
void Vips(benchmark::State& state, const std::function<int(VipsImage*, VipsImage**)>& operation) {
  VipsImage* in = VipsSource();
  if (in == nullptr) {
    state.SkipWithError("libvips didn't start");
    return;
  }
  for (auto _ : state) {
    const double start = CpuSeconds();
    VipsImage* out = nullptr;
    VipsImage* memory = vips_image_new_memory();
    if (operation(in, &out) != 0 || vips_image_write(out, memory) != 0) {
      state.SkipWithError(vips_error_buffer());
    }
    if (out != nullptr) g_object_unref(out);
    g_object_unref(memory);
    state.SetIterationTime(CpuSeconds() - start);
  }
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

// The picture as a BMP file for Pillow, removed when the program ends.
struct PictureFile {
  PictureFile() {
    const vsm::ImageInfo& info = *Source().GetInfo();
    path = "/tmp/vsm_image_geometry_bench_" + std::to_string(getpid()) + ".bmp";
    uint8_t header[14] = {'B', 'M'};
    const uint32_t size = 14 + info.dibSize, offset = 14 + 40;
    std::memcpy(header + 2, &size, 4);
    std::memcpy(header + 10, &offset, 4);
    FILE* file = fopen(path.c_str(), "wb");
    const bool written = file != nullptr && fwrite(header, 1, 14, file) == 14 &&
                         fwrite(info.dib, 1, info.dibSize, file) == info.dibSize;
    if (file != nullptr) fclose(file);
    if (!written) path.clear();
  }
  ~PictureFile() {
    if (!path.empty()) remove(path.c_str());
  }
  std::string path;
};

void Pillow(benchmark::State& state, const char* operation) {
  static PictureFile file;
  if (file.path.empty()) {
    state.SkipWithError("cannot write the picture file");
    return;
  }
  const std::string command =
      std::string("/usr/bin/python3 ") + VSM_PILLOW_TIMING + " " + file.path + " " + operation;
  for (auto _ : state) {
    FILE* child = popen(command.c_str(), "r");
    double seconds = -1;
    const bool read = child != nullptr && fscanf(child, "%lf", &seconds) == 1;
    if (child != nullptr && pclose(child) != 0) seconds = -1;
    if (!read || seconds < 0) {
      state.SkipWithError("Pillow timing failed");
      break;
    }
    state.SetIterationTime(seconds);
  }
}

void BM_PillowTranspose(benchmark::State& state) { Pillow(state, "cw"); }
void BM_PillowRotate30Bilinear(benchmark::State& state) { Pillow(state, "rotate"); }
void BM_PillowKernel3x3(benchmark::State& state) { Pillow(state, "blur"); }
void BM_PillowGrey(benchmark::State& state) { Pillow(state, "grey"); }

}  // namespace

#define VSM_GEOMETRY_BENCH(name) \
  BENCHMARK(name)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime()
VSM_GEOMETRY_BENCH(BM_KitRotateClockwise);
VSM_GEOMETRY_BENCH(BM_VipsRot90);
VSM_GEOMETRY_BENCH(BM_PillowTranspose);
VSM_GEOMETRY_BENCH(BM_KitRotate30Bilinear);
VSM_GEOMETRY_BENCH(BM_VipsRotate30Bilinear);
VSM_GEOMETRY_BENCH(BM_PillowRotate30Bilinear);
VSM_GEOMETRY_BENCH(BM_KitConvolve3x3);
VSM_GEOMETRY_BENCH(BM_VipsConv3x3);
VSM_GEOMETRY_BENCH(BM_PillowKernel3x3);
VSM_GEOMETRY_BENCH(BM_KitToGrey);
VSM_GEOMETRY_BENCH(BM_VipsGrey);
VSM_GEOMETRY_BENCH(BM_PillowGrey);
