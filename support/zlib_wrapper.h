// CZlibWrapper: one memory block into another through zlib's stream format.
//
// Both directions work in a single zlib call on a block held whole in memory; nothing streams.
// Results are malloc blocks that the caller frees with free; null means failure, and then no
// block is left behind. `*targetSize` (when the pointer isn't null) is the length of the result,
// 0 on failure. No state: one wrapper may serve any number of threads. Nothing throws or prints.
#ifndef VSM_SUPPORT_ZLIB_WRAPPER_H_
#define VSM_SUPPORT_ZLIB_WRAPPER_H_

#include <cstdint>

namespace vsm {

// The library version the inflater is initialised against. zlib accepts any version of the
// same major number, so this old text keeps working with the installed library.
extern const char kZlibStreamVersion[];

class CZlibWrapper {
 public:
  CZlibWrapper() = default;
  virtual ~CZlibWrapper();

  // Inflates the zlib stream `source` into a block of exactly `targetCapacity` bytes. The whole
  // stream must end within the capacity: a capacity one byte short of the inflated length is a
  // failure, not a cut result. Null for a `sourceSize` outside 0..0xFFFFFFFF, a capacity above
  // 0xFFFFFFFF, a null source with a non-zero size, an empty or damaged stream, or a failed
  // allocation.
  uint8_t* Uncompress(const uint8_t* source, int64_t sourceSize, uint64_t targetCapacity,
                      uint64_t* targetSize);
  // Deflates `source` at `level` (0..9, or -1 for zlib's default) into a block of exactly the
  // compressed length. Null for a level zlib refuses, a source above 0xFFFFFFFF bytes, a null
  // source with a non-zero size, output that doesn't fit the work block of
  // size + size/4096 + size/16384 + 11 bytes, or a failed allocation.
  uint8_t* Compress(const uint8_t* source, uint64_t sourceSize, int level, uint64_t* targetSize);
};

}  // namespace vsm

#endif  // VSM_SUPPORT_ZLIB_WRAPPER_H_
