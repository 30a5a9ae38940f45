// CZlibWrapper: Uncompress on any bytes with a capacity from the input, checked against zlib's
// own one-call inflater, and the round trip of the input through Compress and Uncompress.
//
// Input: a level byte, two bytes of capacity, then the data.
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "support/zlib_wrapper.h"

namespace {

using vsm::fuzz::FuzzCheck;

std::string Text(const uint8_t* bytes, uint64_t size) {
  return std::string(reinterpret_cast<const char*>(bytes), size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const int level = data[0] % 11 - 1;
  const uint64_t capacity = (static_cast<uint64_t>(data[1]) << 8 | data[2]) * 16;
  const uint8_t* source = data + 3;
  const size_t sourceSize = size - 3;
  vsm::CZlibWrapper wrapper;

  uint64_t inflatedSize = 1;
  uint8_t* inflated = wrapper.Uncompress(source, sourceSize, capacity, &inflatedSize);
  std::vector<uint8_t> expected(capacity + 1);
  uLongf expectedSize = capacity;
  const int status = uncompress(expected.data(), &expectedSize, source, sourceSize);
  // The wrapper takes one stream that ends within the capacity, as zlib's one-call inflater
  // does.
  if (inflated != nullptr) {
    FuzzCheck(status == Z_OK, "what Uncompress takes, zlib takes", Text(source, sourceSize));
    FuzzCheck(Text(inflated, inflatedSize) == Text(expected.data(), expectedSize),
              "Uncompress gives what zlib gives", Text(source, sourceSize));
  } else {
    FuzzCheck(inflatedSize == 0, "a failure has size 0");
  }
  std::free(inflated);

  uint64_t compressedSize = 0;
  uint8_t* compressed = wrapper.Compress(source, sourceSize, level, &compressedSize);
  FuzzCheck(compressed != nullptr, "any bytes compress at any level");
  uint64_t roundSize = 0;
  uint8_t* round = wrapper.Uncompress(compressed, compressedSize, sourceSize, &roundSize);
  FuzzCheck(round != nullptr && Text(round, roundSize) == Text(source, sourceSize),
            "Compress then Uncompress gives the input back", Text(source, sourceSize));
  if (sourceSize > 0) {
    uint64_t shortSize = 1;
    uint8_t* cramped = wrapper.Uncompress(compressed, compressedSize, sourceSize - 1, &shortSize);
    FuzzCheck(cramped == nullptr && shortSize == 0, "a capacity one byte short fails");
  }
  std::free(compressed);
  std::free(round);
  return 0;
}
