// CImage: an in-memory bitmap held as one packed DIB block (a 40-byte BITMAPINFOHEADER, the
// palette, the pixel rows), with the record that mirrors the header and the operations on it.
//
// Conventions every operation shares:
// - The block comes from TrackedAlloc (zero-filled) and goes back through TrackedFree. The image
//   owns it unless `external` is set (a borrowed block); nothing is freed twice.
// - Depths made here are 1, 4, 8 and 24 bits. Rows are padded to four bytes; row 0 is the first
//   row in memory, and every y is a storage row number (the kit never turns y around). 24-bit
//   pixels are blue, green, red; at 4 bits the even x is the high nibble, at 1 bit x = 0 is bit 7.
// - ColorValue is 0x00RRGGBB (blue in byte 0); a palette entry read as a little-endian word is a
//   ColorValue, its spare byte included.
// - Operations answer true/non-null or false/null and leave a code in lastError (table in
//   GetErrorText). IsValid() sets lastError to 0 or 3, so nearly every operation starts by
//   clearing the previous error. No exception of the kit's own leaves an operation.
// - An operation that can fail half way builds its result in a temporary image and swaps it in
//   with TakeOver at the very end, so a failure leaves the old picture in place.
// - Long operations report progress once per row and stop when `cancelled` is set (Cancel()).
//   The flag is sticky: it stays up after the failure, and the next long operation stops at its
//   first row, until Destroy, Detach or TakeOver replaces the state.
//
// Not thread-safe: one thread runs an operation on an image. Cancel() may come from any thread.
//
// The class is split over several files, one per topic: image_core.cc (life of the block,
// errors, progress), image_pixels.cc (pixels and palette), image_depth.cc (depth change),
// image_sampling.cc and image_resample.cc (sampling), image_scale.cc and image_shrink.cc
// (scaling). Further operations go in files of their own with their declarations here.
#ifndef VSM_IMAGE_IMAGE_H_
#define VSM_IMAGE_IMAGE_H_

#include <cstddef>
#include <cstdint>

namespace vsm {

// 0x00RRGGBB: blue in byte 0, green in byte 1, red in byte 2.
using ColorValue = uint32_t;
// The same with red and blue exchanged (0x00BBGGRR).
using ColorRefValue = uint32_t;

// A region in pixels; -1 as right or bottom means the whole width or height. See ReadRegion.
struct ImageRect {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
};

// The image's record. The first eleven fields are a working copy of the block's 40-byte header,
// in its byte order; the rest cache what the pixel loops need and carry the operation state.
struct ImageInfo {
  uint32_t headerSize;
  int32_t width;
  int32_t height;
  uint16_t planes;
  uint16_t bitCount;
  uint32_t compression;
  uint32_t imageSize;
  int32_t xPelsPerMeter;
  int32_t yPelsPerMeter;
  uint32_t colorsUsed;
  // When not 0, only this many palette entries take part in NearestPaletteIndex.
  uint32_t colorsImportant;
  uint32_t stride;
  uint8_t* dib;
  uint8_t* bits;
  uint32_t dibSize;
  // The one-entry cache of NearestPaletteIndex: key, answer, and whether it holds anything.
  uint32_t lastColor;
  uint8_t lastIndex;
  uint8_t lastValid;
  int8_t cancelled;
  uint32_t progress;
  uint32_t lastError;
};

// Error codes left in lastError.
enum ImageError : uint32_t {
  kImageOk = 0,
  kImageCancelled = 1,
  kImageNoMemory = 2,
  kImageInvalid = 3,
  kImageClipboard = 4,
  kImageBadValue = 5,
  kImageBadShape = 6,
  kImageTooLarge = 7,
};

// Size of the header at the start of every block the kit makes.
constexpr uint32_t kDibHeaderSize = 40;

// Tag of the constructor that borrows a block instead of copying it.
struct BorrowBlock {};
inline constexpr BorrowBlock kBorrowBlock{};

class CImage {
 public:
  // Empty image: not external, all of ImageInfo zero.
  CImage();
  // Attach(dib, copy, not external): the image owns a copy of the block.
  explicit CImage(const void* dib);
  // Attach(dib, no copy, external): the image works on the caller's block and never frees it.
  CImage(void* dib, BorrowBlock);
  CImage(const CImage&) = delete;
  CImage& operator=(const CImage&) = delete;

  // Virtual operations, in the order of their slots. The destructor is Destroy().
  virtual ~CImage();
  // Called from inside long operations with the percentage done, for subclasses only; this
  // class's version does nothing. An override may call Cancel().
  virtual void OnProgress(uint32_t percent);
  // "CImage".
  virtual const char* GetClassName() const;

  // --- The block and its record (image_core.cc) ---

  // True when a block and pixels are there, the depth isn't 0 and both sizes are at least 1.
  // Sets lastError to 0 when true and to 3 when false.
  bool IsValid();
  // Makes a new zeroed block of `width` x `height` at `bits` (0: the template's depth; rounded up
  // to 1, 4, 8 or 24), copying `templateInfo` first (resolutions, cache, flags) and the
  // template's palette bytes. `templateInfo` may be this image's own record; it must stay
  // readable. The old block isn't released: call it on an empty image. Null on failure, with the
  // error (3 zero size, 7 past 0xFFFFFFFE bytes, 2 no memory) in this image and in the template.
  uint8_t* Create(int32_t width, int32_t height, ImageInfo* templateInfo, uint32_t bits);
  // Releases the block unless external, and zeroes ImageInfo; `external` stays.
  void Destroy();
  // Destroy, then take `dib` (sized by DibSizeFromHeader): a copy when `copy`, else the block
  // itself. A null `dib` leaves error 3, a failed copy error 2.
  void Attach(void* dib, bool copy, bool external);
  // Gives up the block without freeing it and empties the image; the caller owns the block.
  uint8_t* Detach();
  // Destroy, then take `other`'s record whole (not external), leaving `other` empty.
  void TakeOver(CImage& other);
  // The block, or null when IsValid fails.
  uint8_t* GetDib();
  // A new TrackedAlloc copy of the block; null with error 3 (invalid) or 2 (no memory).
  uint8_t* CopyDib();
  // Reloads the header part of the record from the block at `dib`, with `size` as dibSize;
  // stride and imageSize are recomputed, a colour count of 0 at 8 bits or less becomes
  // 1 << bitCount, and the pixels start behind the header's own size and the palette.
  void ApplyHeader(uint32_t size);
  // Bytes of a packed DIB with this 40-byte header: rows, 40, and the palette (4 << bitCount
  // when the depth is 8 or less and the colour count 0, else 4 * colour count).
  static uint32_t DibSizeFromHeader(const void* header);

  // width / height as 32-bit floats; 1.0 when invalid.
  float GetAspectRatio();
  // Bytes of the pixel rows of a `width` x `height` picture at this image's depth; -1, -1 means
  // this image's size. Another negative argument: error 5 and -1. Invalid image: -1.
  int64_t GetPixelBytes(int32_t width, int32_t height);
  // Dots per inch from the pixels-per-metre fields: 0 when invalid, 96 for a field below 1.
  int32_t GetXDpi();
  int32_t GetYDpi();
  // Store dots per inch as pixels per metre (3780 for a value below 1), in the record only.
  void SetXDpi(int32_t dpi);
  void SetYDpi(int32_t dpi);
  // Raises the cancel flag; the running or next long operation stops at a row boundary.
  void Cancel();
  // Copies the text of lastError, NUL included (at most 44 bytes), into `buffer` and returns
  // it; with a null buffer returns "NULL Pointer!" and writes nothing.
  const char* GetErrorText(char* buffer) const;
  // The columns left..right-1 and storage rows top..bottom-1 that `rect` names, for every region
  // operation: right -1 is the whole width, bottom -1 the whole height, the rest clamped to the
  // image and put in ascending order. An empty region gives error 5 and false.
  bool ReadRegion(ImageRect rect, ImageRect* region);

  ImageInfo* GetInfo() { return &info_; }
  const ImageInfo* GetInfo() const { return &info_; }
  bool IsExternal() const { return external_; }
  uint32_t GetLastError() const { return info_.lastError; }

  // --- Pixels and palette (image_pixels.cc) ---

  // The palette index at (x, y) for 1, 4 and 8 bits, 0 at other depths. Outside the image it
  // gives the first byte of the pixel array, as a whole byte, at every depth.
  uint8_t PixelIndexAt(int32_t x, int32_t y);
  // The same for a position known to be inside, with no check.
  uint8_t PixelIndexAtFast(int32_t x, int32_t y);
  // Writes the low nibble (4 bits) or low bit (1 bit) or the byte (8 bits), keeping the rest of
  // the byte. Nothing without a palette, a block, or outside.
  void StorePixelIndex(int32_t x, int32_t y, uint8_t index);
  // The colour at (x, y): the palette entry (all four bytes) or three pixel bytes. Outside the
  // image the colour of (0, 0).
  ColorValue PixelColorAt(int32_t x, int32_t y);
  // The same for a position known to be inside (24-bit pixels at 3 * x).
  ColorValue PixelColorAtFast(int32_t x, int32_t y);
  // Writes the nearest palette index, or bytes 0 to 2 of `color`. Nothing when invalid or outside.
  void StorePixelColor(int32_t x, int32_t y, ColorValue color);
  // Address of a 24-bit pixel, no range check; null for an image with a palette.
  uint8_t* PixelAddress24(int32_t x, int32_t y);

  // All four bytes of a palette entry; 0 when invalid, without a palette or out of range.
  ColorValue PaletteColorAt(uint32_t index);
  void StorePaletteColor(uint32_t index, ColorValue color);
  // Blue, green and red of an entry; its spare byte becomes 0.
  void StorePaletteRgb(uint32_t index, uint8_t red, uint8_t green, uint8_t blue);
  // The palette inside the block (block + 40); null when invalid or without a palette.
  uint8_t* GetPalette();
  uint32_t GetPaletteBytes() const { return info_.colorsUsed * 4; }
  uint32_t GetColorCount() const { return info_.colorsUsed; }
  bool HasPalette() const { return info_.colorsUsed != 0; }
  // Copies min(4 * count, GetPaletteBytes()) bytes; nothing for null entries, an invalid image
  // or one without a palette.
  void SetPalette(const void* entries, uint32_t count);
  // True when every entry has equal blue, green and red.
  bool IsGreyPalette();
  // Entry i becomes grey 255 / (n - 1) * i (integer step); spare bytes stay.
  void SetGreyRamp();
  // The 16-entry table at 4 bits, the 256-entry table at 8 bits; nothing at other depths.
  void SetStandardPalette();
  // The entry nearest to `color` by the sum of squared differences of blue, green and red; the
  // lowest index wins a tie. Only the first colorsImportant entries take part when that isn't 0.
  // A one-entry cache answers a repeated colour; nothing invalidates it, not even a palette
  // write, and Create copies it into a new image. 0 when invalid or without a palette.
  uint8_t NearestPaletteIndex(ColorValue color);
  // An entry equal to `color` among the first `used`, or `color` appended at entry `used` when
  // the palette has room, or else the nearest. `used` below 1 writes entry 0 when there is one.
  int32_t FindOrAddPaletteColor(ColorValue color, int32_t used);
  bool IsInside(int32_t x, int32_t y) const;
  // Exchanges bytes 0 and 2; byte 3 becomes 0.
  static ColorValue SwapRedBlue(ColorValue color);

  // --- Depth change (image_depth.cc) ---

  // To a lower depth through ReduceBitDepth (with `optimise`, a palette made by CQuantizer and
  // error diffusion), to a higher one through RaiseBitDepth; the same depth does nothing.
  bool ConvertBitDepth(uint32_t bits, bool optimise);
  // Maps every pixel to `palette` (16 or 256 entries, or 2 at 1 bit; null: the standard palette,
  // or black and white), optionally with error diffusion. `colorLimit` only decides whether an
  // image already at `bits` is left as it is. No progress and no cancel.
  bool ReduceBitDepth(uint32_t bits, bool diffuse, const void* palette, uint32_t colorLimit);
  // To 4, 8 or 24 bits, never lower: indices and palette are kept, or pixels become colours.
  bool RaiseBitDepth(uint32_t bits);

  // --- Sampling at positions between pixels (image_sampling.cc, image_resample.cc) ---

  // For a position outside the image: 5 clamps to the edge, 6 mirrors, 4 wraps; other methods
  // leave it. Inside positions stay.
  void FoldPixelCoords(int32_t& x, int32_t& y, int32_t method);
  void FoldFloatCoords(float& x, float& y, int32_t method);
  // The pixel inside the image, or for a position outside by overflow method: 4, 5, 6 the
  // folded pixel, any other the background (four bytes blue, green, red, spare; null: white).
  ColorValue PixelColorOrBackground(int32_t x, int32_t y, int32_t overflow,
                                    const uint8_t* background);
  // The colour at (x, y) by sampling mode: 1 nearest, 3 cubic, 4 cubic with a = -0.5, other
  // bilinear. Overflow 1 to 3 answer the background outside the image, 4 to 6 fold.
  ColorValue SampleAt(int32_t mode, int32_t overflow, const uint8_t* background, float x, float y);
  // The average over an area of the given size centred on (x, y).
  ColorValue SampleArea(int32_t mode, int32_t overflow, const uint8_t* background, float x, float y,
                        float areaWidth, float areaHeight);
  // Resizes by SampleAt (or SampleArea when shrinking, unless `noAveraging`), pixel centres
  // aligned. Mode 1 to 5, overflow 1 to 6, sizes at least 1, else error 5. Reports progress per
  // destination row and can be cancelled. No result: lastError tells.
  void ResampleSampled(int32_t newWidth, int32_t newHeight, int32_t mode, int32_t overflow,
                       bool noAveraging);
  // Stores new resolutions, or with `resample` also resizes by the ratio of new to old through
  // ResampleSampled (mode `method`, overflow 5, averaging on).
  void SetDpi(int32_t xDpi, int32_t yDpi, bool resample, int32_t method);

  // --- Scaling (image_scale.cc) ---

  // Resizes by method: 1 nearest, 2 B-spline, 5 box (shrinking makes the image 24-bit), other
  // bilinear, with an integer area average when a 24-bit image shrinks in both directions.
  // False for an invalid image or a size below 1; true at once for the same size.
  bool Scale(int32_t newWidth, int32_t newHeight, int32_t method);

 private:
  // --- Progress and cancel (image_core.cc) ---

  // One row of a long operation: stores row * 100 / total as progress and calls OnProgress.
  // True when the operation is to stop (cancelled), with lastError 1.
  bool StopAtRow(int32_t row, int32_t total);
  // The last test of a long operation: when not cancelled, TakeOver(result) and clear the cancel
  // flag and progress; when cancelled, lastError 1 and false.
  bool FinishWith(CImage& result);

  // The engine behind Scale, by its own method numbers; the source must be valid.
  bool ResampleCore(int32_t newWidth, int32_t newHeight, int32_t method);
  void ScaleNearest(CImage& target);
  void ScaleBSpline(CImage& target);
  void ScaleBox(CImage& target);
  void ScaleBilinear(CImage& target);
  void ShrinkByArea(CImage& target);

  bool external_;
  ImageInfo info_;
};

}  // namespace vsm

#endif  // VSM_IMAGE_IMAGE_H_
