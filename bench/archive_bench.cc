// The archive kit beside baselines measured in the same run: zlib's own one-call compress2 and
// uncompress for CZlibWrapper, and for CUnzipper::Extract the zip library's default file
// functions with plain fopen/fwrite of every entry (the floor of any extraction).
#include <benchmark/benchmark.h>
#include <minizip/unzip.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/unzipper.h"
#include "support/zlib_wrapper.h"
#include "test_support/zip_writer.h"

namespace vsm {
namespace {

std::string Payload(size_t size) {
  std::mt19937 random(5);
  std::string text;
  while (text.size() < size) text += "scanner " + std::to_string(random() % 5000) + " ";
  return text.substr(0, size);
}

const Bytef* Bytes(const std::string& text) { return reinterpret_cast<const Bytef*>(text.data()); }

void BM_Compress2Baseline(benchmark::State& state) {
  const std::string data = Payload(state.range(0));
  std::vector<Bytef> out(compressBound(data.size()));
  for (auto _ : state) {
    uLongf size = out.size();
    benchmark::DoNotOptimize(compress2(out.data(), &size, Bytes(data), data.size(), 6));
  }
  state.SetBytesProcessed(state.iterations() * data.size());
}
BENCHMARK(BM_Compress2Baseline)->Arg(4096)->Arg(1 << 20);

void BM_ZlibWrapperCompress(benchmark::State& state) {
  const std::string data = Payload(state.range(0));
  CZlibWrapper wrapper;
  for (auto _ : state) {
    uint64_t size = 0;
    std::free(wrapper.Compress(Bytes(data), data.size(), 6, &size));
  }
  state.SetBytesProcessed(state.iterations() * data.size());
}
BENCHMARK(BM_ZlibWrapperCompress)->Arg(4096)->Arg(1 << 20);

void BM_UncompressBaseline(benchmark::State& state) {
  const std::string data = Payload(state.range(0));
  std::vector<Bytef> packed(compressBound(data.size())), out(data.size());
  uLongf packedSize = packed.size();
  compress2(packed.data(), &packedSize, Bytes(data), data.size(), 6);
  for (auto _ : state) {
    uLongf size = out.size();
    benchmark::DoNotOptimize(uncompress(out.data(), &size, packed.data(), packedSize));
  }
  state.SetBytesProcessed(state.iterations() * data.size());
}
BENCHMARK(BM_UncompressBaseline)->Arg(4096)->Arg(1 << 20);

void BM_ZlibWrapperUncompress(benchmark::State& state) {
  const std::string data = Payload(state.range(0));
  std::vector<Bytef> packed(compressBound(data.size()));
  uLongf packedSize = packed.size();
  compress2(packed.data(), &packedSize, Bytes(data), data.size(), 6);
  CZlibWrapper wrapper;
  for (auto _ : state) {
    uint64_t size = 0;
    std::free(wrapper.Uncompress(packed.data(), packedSize, data.size(), &size));
  }
  state.SetBytesProcessed(state.iterations() * data.size());
}
BENCHMARK(BM_ZlibWrapperUncompress)->Arg(4096)->Arg(1 << 20);

// A package of 200 files of 16 KiB in 10 folders, and a folder to extract into, for the run.
struct Package {
  Package() {
    char pattern[] = "/tmp/vsm-bench-XXXXXX";
    if (mkdtemp(pattern) == nullptr) std::abort();
    root = pattern;
    std::vector<testing::ZipEntry> entries;
    for (int i = 0; i < 200; ++i) {
      entries.push_back({"d" + std::to_string(i % 10) + "/f" + std::to_string(i), Payload(16384)});
    }
    if (!testing::WriteZip(root + "/package.zip", entries)) std::abort();
    mkdir((root + "/out").c_str(), 0755);
  }
  ~Package() { std::system(("rm -rf '" + root + "'").c_str()); }
  std::string root;
};

const Package& TestPackage() {
  static const Package package;
  return package;
}

void BM_PlainExtractBaseline(benchmark::State& state) {
  const Package& package = TestPackage();
  std::vector<char> buffer(8192);
  for (auto _ : state) {
    unzFile zip = unzOpen64((package.root + "/package.zip").c_str());
    for (int more = unzGoToFirstFile(zip); more == UNZ_OK; more = unzGoToNextFile(zip)) {
      char name[256] = {0};
      unzGetCurrentFileInfo64(zip, nullptr, name, sizeof(name) - 1, nullptr, 0, nullptr, 0);
      const std::string path = package.root + "/out/" + name;
      mkdir(path.substr(0, path.rfind('/')).c_str(), 0775);
      FILE* out = std::fopen(path.c_str(), "wb");
      unzOpenCurrentFile(zip);
      for (int got; (got = unzReadCurrentFile(zip, buffer.data(), buffer.size())) > 0;) {
        std::fwrite(buffer.data(), 1, got, out);
      }
      unzCloseCurrentFile(zip);
      std::fclose(out);
    }
    unzClose(zip);
  }
}
BENCHMARK(BM_PlainExtractBaseline)->Unit(benchmark::kMillisecond);

void BM_UnzipperExtract(benchmark::State& state) {
  const Package& package = TestPackage();
  const std::string zip = package.root + "/package.zip";
  const std::string out = package.root + "/out";
  for (auto _ : state) {
    CUnzipper unzipper;
    if (!unzipper.Extract(zip.c_str(), out.c_str())) state.SkipWithError(unzipper.GetMessage());
  }
}
BENCHMARK(BM_UnzipperExtract)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vsm
