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
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <vips/vips.h>

#include <time.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "image/image.h"

namespace {

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

// A copy of the picture to work on.
void Fresh(vsm::CImage& image) {
  image.Destroy();
  image.Attach(const_cast<vsm::CImage&>(Picture()).GetDib(), true, false);
}

double ProcessSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec + now.tv_nsec * 1e-9;
}

// Runs `operation` on a fresh copy of the picture per iteration and reports its processor time.
template <typename Operation>
void RunKit(benchmark::State& state, Operation operation) {
  vsm::CImage image;
  for (auto _ : state) {
    Fresh(image);
    const double start = ProcessSeconds();
    if (!operation(image)) state.SkipWithError("the operation failed");
    state.SetIterationTime(ProcessSeconds() - start);
  }
}

void BM_KitScaleHalfBilinear(benchmark::State& state) {
  RunKit(state, [](vsm::CImage& image) { return image.Scale(kWidth / 2, kHeight / 2, 3); });
}

void BM_KitScaleUpBSpline(benchmark::State& state) {
  RunKit(state, [](vsm::CImage& image) { return image.Scale(kWidth * 3 / 2, kHeight * 3 / 2, 2); });
}

void BM_KitReduceTo8Diffused(benchmark::State& state) {
  RunKit(state, [](vsm::CImage& image) { return image.ReduceBitDepth(8, true, nullptr, 256); });
}

// --- libvips, one thread ---

VipsImage* VipsPicture() {
  static VipsImage* picture = [] {
    if (VIPS_INIT("image_bench") != 0) return static_cast<VipsImage*>(nullptr);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    const vsm::ImageInfo& info = *Picture().GetInfo();
    // Rows of 6000 pixels need no padding, so the pixel array is vips's packed layout as it is.
    return vips_image_new_from_memory(info.bits, info.imageSize, kWidth, kHeight, 3,
                                      VIPS_FORMAT_UCHAR);
  }();
  return picture;
}

template <typename Operation>
void RunVips(benchmark::State& state, Operation operation) {
  VipsImage* in = VipsPicture();
  if (in == nullptr) {
    state.SkipWithError("libvips didn't start");
    return;
  }
  for (auto _ : state) {
    const double start = ProcessSeconds();
    VipsImage* out = nullptr;
    VipsImage* memory = vips_image_new_memory();
    if (operation(in, &out) != 0 || vips_image_write(out, memory) != 0) {
      state.SkipWithError(vips_error_buffer());
    }
    if (out != nullptr) g_object_unref(out);
    g_object_unref(memory);
    state.SetIterationTime(ProcessSeconds() - start);
  }
}

void BM_VipsReduceHalfLinear(benchmark::State& state) {
  RunVips(state, [](VipsImage* in, VipsImage** out) {
    return vips_reduce(in, out, 2.0, 2.0, "kernel", VIPS_KERNEL_LINEAR, nullptr);
  });
}

void BM_VipsResizeHalfLinear(benchmark::State& state) {
  RunVips(state, [](VipsImage* in, VipsImage** out) {
    return vips_resize(in, out, 0.5, "kernel", VIPS_KERNEL_LINEAR, nullptr);
  });
}

void BM_VipsShrinkHalf(benchmark::State& state) {
  RunVips(state,
          [](VipsImage* in, VipsImage** out) { return vips_shrink(in, out, 2.0, 2.0, nullptr); });
}

void BM_VipsResizeUpCubic(benchmark::State& state) {
  RunVips(state, [](VipsImage* in, VipsImage** out) {
    return vips_resize(in, out, 1.5, "kernel", VIPS_KERNEL_CUBIC, nullptr);
  });
}

// --- Pillow, in a child process that reports the seconds of the operation alone ---

// The picture as a BMP file for the child process, removed when the benchmark ends.
struct PictureFileHolder {
  ~PictureFileHolder() {
    if (!path.empty()) remove(path.c_str());
  }
  std::string path;
};

const std::string& PictureFile() {
  static PictureFileHolder holder{[] {
    const std::string file = "/tmp/vsm_image_bench_" + std::to_string(getpid()) + ".bmp";
    const vsm::ImageInfo& info = *Picture().GetInfo();
    uint8_t header[14] = {'B', 'M'};
    const uint32_t size = 14 + info.dibSize, offset = 14 + 40;
    std::memcpy(header + 2, &size, 4);
    std::memcpy(header + 10, &offset, 4);
    FILE* out = fopen(file.c_str(), "wb");
    if (out == nullptr) return std::string();
    const bool written =
        fwrite(header, 1, 14, out) == 14 && fwrite(info.dib, 1, info.dibSize, out) == info.dibSize;
    fclose(out);
    return written ? file : std::string();
  }()};
  return holder.path;
}

void RunPillow(benchmark::State& state, const char* operation) {
  const std::string& file = PictureFile();
  if (file.empty()) {
    state.SkipWithError("cannot write the picture file");
    return;
  }
  const std::string command =
      std::string("/usr/bin/python3 ") + VSM_PILLOW_TIMING + " " + file + " " + operation;
  for (auto _ : state) {
    FILE* child = popen(command.c_str(), "r");
    double seconds = -1;
    if (child == nullptr || fscanf(child, "%lf", &seconds) != 1 || pclose(child) != 0 ||
        seconds < 0) {
      state.SkipWithError("Pillow timing failed");
      break;
    }
    state.SetIterationTime(seconds);
  }
}

void BM_PillowResizeHalfBilinear(benchmark::State& state) { RunPillow(state, "half"); }
void BM_PillowReduceHalf(benchmark::State& state) { RunPillow(state, "reduce"); }
void BM_PillowResizeUpBicubic(benchmark::State& state) { RunPillow(state, "up"); }
void BM_PillowDitherToWebPalette(benchmark::State& state) { RunPillow(state, "dither"); }

}  // namespace

#define VSM_IMAGE_BENCH(name) \
  BENCHMARK(name)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime()
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
