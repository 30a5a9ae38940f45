// What the image benchmarks share: processor-time timing, a 24-bit picture handed to libvips on
// one thread with no operation cache, and Pillow timed in a child process
// (image_pillow_timing.py, which times the operation alone, loading excluded). Times are the
// processor seconds of the process (libvips's worker thread included), not the wall clock, so
// that other load on the machine doesn't tilt the ratios.
#ifndef VSM_BENCH_IMAGE_BASELINES_H_
#define VSM_BENCH_IMAGE_BASELINES_H_

#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>
#include <vips/vips.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "image/image.h"

namespace vsm::bench {

inline double ProcessSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Runs `operation` on a fresh copy of `picture` per iteration and reports its processor time.
template <typename Operation>
void RunKit(benchmark::State& state, const CImage& picture, Operation operation) {
  for (auto _ : state) {
    CImage image(const_cast<CImage&>(picture).GetDib());
    const double start = ProcessSeconds();
    if (!operation(image)) state.SkipWithError("the kit refused");
    state.SetIterationTime(ProcessSeconds() - start);
  }
}

// The picture's rows as a vips image (rows whose byte count is a multiple of four, so that the
// pixel array is vips's packed layout as it stands); null when libvips doesn't start.
inline VipsImage* VipsPicture(const CImage& picture) {
  if (VIPS_INIT("vsm_image_bench") != 0) return nullptr;
  vips_concurrency_set(1);
  vips_cache_set_max(0);
  const ImageInfo& info = *picture.GetInfo();
  return vips_image_new_from_memory(info.bits, info.imageSize, info.width, info.height, 3,
                                    VIPS_FORMAT_UCHAR);
}

// Times building and computing `operation`'s output into memory.
template <typename Operation>
void RunVips(benchmark::State& state, VipsImage* in, Operation operation) {
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

// The picture as a BMP file for the Pillow child, removed when the benchmark program ends.
class PictureFile {
 public:
  explicit PictureFile(const CImage& picture) {
    const ImageInfo& info = *picture.GetInfo();
    path_ = "/tmp/vsm_image_bench_" + std::to_string(getpid()) + ".bmp";
    uint8_t header[14] = {'B', 'M'};
    const uint32_t size = 14 + info.dibSize, offset = 14 + 40;
    std::memcpy(header + 2, &size, 4);
    std::memcpy(header + 10, &offset, 4);
    FILE* file = fopen(path_.c_str(), "wb");
    const bool written = file != nullptr && fwrite(header, 1, 14, file) == 14 &&
                         fwrite(info.dib, 1, info.dibSize, file) == info.dibSize;
    if (file != nullptr) fclose(file);
    if (!written) path_.clear();
  }
  ~PictureFile() {
    if (!path_.empty()) remove(path_.c_str());
  }
  PictureFile(const PictureFile&) = delete;
  PictureFile& operator=(const PictureFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Reports the seconds image_pillow_timing.py measures for `operation` on the file.
inline void RunPillow(benchmark::State& state, const PictureFile& file, const char* operation) {
  if (file.path().empty()) {
    state.SkipWithError("cannot write the picture file");
    return;
  }
  const std::string command =
      std::string("/usr/bin/python3 ") + VSM_PILLOW_TIMING + " " + file.path() + " " + operation;
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

}  // namespace vsm::bench

#define VSM_IMAGE_BENCH(name) \
  BENCHMARK(name)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime()

#endif  // VSM_BENCH_IMAGE_BASELINES_H_
