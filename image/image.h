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
// Tag of the constructor that flattens a 32-bit block's alpha onto white (AttachFlattened).
struct FlattenAlpha {};
inline constexpr FlattenAlpha kFlattenAlpha{};

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

  // --- Geometry (image_geometry.cc, image_rotate.cc, image_crop.cc) ---
  // Results are built in a temporary and swapped in at the end; each operation refuses an invalid
  // image with false. Long ones report progress and can be cancelled (see each file).

  // Row i becomes row height - 1 - i.
  bool FlipRows();
  // Pixel x becomes pixel width - 1 - x in every row.
  bool MirrorColumns();
  // Quarter turns as seen on a picture stored bottom-up: clockwise, (x, y) goes to
  // (y, width - 1 - x); counter-clockwise to (height - 1 - y, x). Width and height exchange.
  bool RotateClockwise();
  bool RotateCounterClockwise();
  // (x, y) goes to (width - 1 - x, height - 1 - y).
  bool RotateHalfTurn();
  // The angle truncated to whole degrees modulo 360: 90, 180 and 270 turn, 0 gives true, any
  // other false.
  bool RotateRightAngle(double angle);
  // True when `angle` is a whole number of degrees and a multiple of 90.
  static bool IsRightAngle(double angle);
  // Turns by `angle` degrees, each pixel sampled by SampleAt (mode, overflow, background: four
  // bytes or null for white). The picture grows to the turned bounding box, or keeps its size.
  // Right angles and turns that end within a quarter pixel of one take the exact routines. An
  // angle that gives no finite size is error 5.
  bool Rotate(int32_t mode, int32_t overflow, const uint8_t* background, bool keepSize,
              float angle);
  // Copies the region (see ReadRegion) into `target`, which should be empty, at this depth. A
  // cancel stops with false and no error, leaving the rows made so far in `target`.
  bool CropTo(ImageRect rect, CImage& target);
  // Keeps the region. True at once when the raw rect is at least the image's size in both
  // directions, or is (0, 0, -1, -1).
  bool Crop(ImageRect rect);
  // The region as a new block the caller owns (TrackedFree), or null.
  uint8_t* CropToDib(ImageRect rect);
  // Crops into a temporary and drops it: there is no clipboard to take the pixels. Always 0.
  int32_t CropAndDiscard(ImageRect rect);
  // A smaller width crops from the right; a larger one keeps every row's bytes and paints the new
  // columns with `color`.
  bool ExtendWidth(int32_t newWidth, ColorRefValue color);
  // Writes the picture of the packed DIB `dib` (borrowed, not changed) with its pixel (0, 0) at
  // (x, y), clipped to this image; negative x and y count as 0. A 1-bit image takes white for
  // white and black for every other colour. A block the tracked heap knows to be shorter than
  // its header says is refused with error 3.
  bool Paste(int32_t x, int32_t y, const void* dib);

  // --- Packed DIB import (dib_import.cc) ---
  // Foreign blocks: 16- and 32-bit pixels, bit fields, alpha. Reads never leave the block that
  // TrackedSize reports; bytes a header claims past its end read as 0.

  // Called on an empty image, which it leaves empty: a new plain block (the caller owns it) with
  // the picture of `dib`, 16 and 32 bits brought to 24. Null for compression other than 0 and 3,
  // and with error 3 for null or an unknown or shorter-than-a-header block.
  uint8_t* NormaliseDib(const void* dib);
  // Writes the pixel array from `source` rows of 16-bit pixels decoded by the masks, or 32-bit
  // pixels (masks ignored), last row and last pixel first, so `source` may be this image's own
  // pixels. `source` must hold all the rows. Other depths: nothing.
  void ExpandBitfields(const uint8_t* source, uint32_t redMask, uint32_t greenMask,
                       uint32_t blueMask, uint32_t depth);
  // A 32-bit (or deeper) picture composed onto white as a new 24-bit block the caller owns;
  // `dib` itself below 32 bits; null for a block under 40 bytes or shorter than its rows, sizes
  // below 1, or no memory.
  static uint8_t* FlattenAlphaDib(const void* dib);
  // Attach, with a 32-bit picture flattened first: the image then owns the new block and frees
  // `dib` when it was handed over (copy and external both false). A block the tracked heap knows
  // to be shorter than its header's layout, or whose header the kit can't hold (sizes below 1, a
  // header other than 40 bytes, a depth but 1, 4, 8, 16, 24, 32, more than 256 colours), is
  // refused with error 3 and the image stays empty; a handed-over block is freed then too.
  void AttachFlattened(void* dib, bool copy, bool external);
  // AttachFlattened(dib, copy, not external), and AttachFlattened(dib, copy, external).
  CImage(const void* dib, FlattenAlpha);
  CImage(void* dib, bool copy, bool external);

  // --- Tone (image_tone.cc) ---
  // Grey of a pixel: (green * 601 + blue * 117 + red * 306) >> 10.

  // A 1-bit picture of the region: white where the grey is above `level`. A 1-bit image is only
  // cropped. A cancel keeps the rows done so far, with true.
  bool Threshold(ImageRect rect, int32_t level);
  // Grey 8-bit picture. Above 8 bits, of the region's size, read from row 0 and byte `left` of
  // each row (exact for a region at the origin); at 8 bits the whole image in place, palette
  // greyed; at 4 and 1 bits the region. `resized` (may be null) tells whether the size changed.
  bool ToGrey(ImageRect rect, bool* resized);
  // Inverts the pixel bytes above 8 bits, the palette of a coloured palette image, or the
  // indices of a grey one.
  bool Negate();
  // Maps channels through a 256-byte table: the palette's, or without one every pixel byte i
  // from the table entry of byte i + 1, shifting the picture by one byte (a byte past the block
  // reads as 0). Null `table`: error 5.
  bool ApplyLut(const uint8_t* table);
  // The table pow(i, 1 / gamma) / (pow(255, 1 / gamma) / 255), clamped, through ApplyLut.
  bool ApplyGamma(float gamma);
  // The table (i - 128) * (contrast + 100) / 100 + brightness + 128, clamped, through ApplyLut.
  void ApplyLight(float brightness, float contrast);
  void AdjustBrightness(float value);
  void AdjustContrast(float value);

  // --- Filter (image_filter.cc) ---

  // Filters with a `size` x `size` kernel (row 0 meets the window's lowest row), each sum
  // divided by `factor` and moved by `offset`, clamped to 0..255. A grey 8-bit image keeps a
  // border unfiltered (two columns and rows at the low end for size 3, one at the high end); any
  // other image filters every pixel, taps outside reading pixel (0, 0). Sums wrap at 32 bits. A
  // size below 1 or past 46340, or a null kernel: error 5.
  bool Convolve(const int32_t* kernel, int32_t size, int32_t factor, int32_t offset);

  // --- Drawing (image_draw.cc) ---

  // Paints the region with the colour of four bytes at `color` (the palette's exact or nearest
  // entry). No result: lastError tells (5 for an empty region or a null colour, 1 on cancel).
  void FillRect(ImageRect rect, const uint8_t* color);
  // A new 24-bit block the caller owns, of the raw rect's size, holding the region blended
  // towards `color`: `opacity` in (0, 1) mixes, from 1 up paints the colour, else copies. This
  // image doesn't change. A cancel returns the rows done so far.
  uint8_t* BlendRectToDib(ImageRect rect, const uint8_t* color, float opacity);
  // A box with rounded corners from (left, height - bottom - 1), its right and bottom in the
  // high and low 16 bits of `rightAndBottom`. `alpha` in (0, 1) is the weight of the old pixel;
  // 1 paints a solid box with square corners; anything else draws nothing. A non-zero byte at
  // `shape`: error 6; a null `shape`: error 5.
  bool DrawRoundedBox(int32_t left, int32_t top, const uint8_t* shape, uint32_t rightAndBottom,
                      ColorRefValue color, float ratio, float alpha);

  // --- Measures (image_bounds.cc) ---

  // A one-pass spread of the region's colours, each read as blue * 65536 + green * 256 + red,
  // around a running mean. 0.0 with error 5 for an empty region.
  double ColorDeviation(ImageRect rect);
  // Where dark pixels lie: thresholds, scales to 300 wide, blurs, and maps the black pixels'
  // box back, with `top` the larger row number. Destroys the picture. False when a step fails.
  bool FindInkBounds(int32_t level, ImageRect* rectOut);
  // The box of pixels whose colour (all four bytes) differs from `color`; (0x7FFFFFFF,
  // 0x7FFFFFFF, 0, 0) when none does.
  ImageRect FindContentBounds(ColorValue color);

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

  // IsValid, and the pixel rows (stride * height bytes behind `bits`) lie inside the block; error
  // 3 otherwise. The row loops of the geometry, tone and filter operations rely on it.
  bool HasWholeRows();
  // Copies pixel (x, y) to (toX, toY) of `target`: by index between palette images of one depth,
  // else by colour. The per-pixel form behind every row loop.
  void CopyPixelTo(CImage& target, int32_t toX, int32_t toY, int32_t x, int32_t y);
  // The quarter turns: a bit walk at 1 bit, the tile walk at 4, 8 and 24 bits.
  bool TurnQuarter(bool clockwise);
  bool TurnByTiles(CImage& target, bool clockwise);
  bool TurnOneBit(CImage& target, bool clockwise);
  // The walk of Rotate over the destination, with the sampling inlined for plain 24-bit
  // bilinear.
  bool RotateInto(CImage& target, int32_t mode, int32_t overflow, const uint8_t* background,
                  float c, float s, float startX, float startY, float addX, float addY);
  // Convolve's two paths.
  bool ConvolveGrey(CImage& target, const int32_t* kernel, int32_t size, int32_t factor,
                    int32_t offset);
  bool ConvolveColor(CImage& target, const int32_t* kernel, int32_t size, int32_t factor,
                     int32_t offset);

  bool external_;
  ImageInfo info_;
};

}  // namespace vsm

#endif  // VSM_IMAGE_IMAGE_H_
