// CBase64: base64 with the RFC 4648 alphabet and `=` padding, through an object that owns its
// two work buffers: `plainBuffer` (the bytes) and `textBuffer` (the base64 characters).
//
// Every step is virtual, so a subclass can change how blocks are split, joined and padded and
// what counts as white space; Encode and Decode call the steps of the object. An object of this
// very class takes a faster loop that gives the same bytes, lengths and buffers.
//
// Decoding reports nothing: white space (codes 7 to 13 and the blank) is dropped, a character
// with bit 7 set decodes like the one without it, an invalid character decodes as 62 (its table
// value 254, masked to six bits), `=` as 63 in the first two places of a group of four and as 0
// elsewhere. Each group writes 3 bytes; a trailing group of 1 to 3 characters counts that many.
// Then the result shrinks by one byte for each `=` anywhere in the text, also in the middle,
// without moving any byte, and never below 0: "QQ==" gives 3 bytes, then loses 2.
//
// Buffers: a reservation that exceeds a buffer's capacity frees it (the content is not kept)
// and allocates a zeroed block of (size & ~0xfff) + 4096 bytes; a smaller one reuses the block
// as it is. Encode doesn't terminate the text: the zeroed reservation ends it, which holds on a
// fresh block but not after a longer text was encoded into the same block. A failed allocation
// leaves the buffer null and the call ends with its length 0.
//
// Use an object in one direction. Encode points plainBuffer at the caller's data and clears it
// afterwards; a block that an earlier Decode had allocated there is lost to the object (it
// stays valid until the object is destroyed) while plainCapacity keeps its value. A later Decode
// whose text fits that capacity writes its bytes through the null plainBuffer and crashes.
//
// An instance belongs to one thread. Sizes are 32 bits.
#ifndef VSM_SUPPORT_BASE64_H_
#define VSM_SUPPORT_BASE64_H_

#include <cstdint>
#include <vector>

namespace vsm {

// A block between the steps: up to 4 bytes (plain bytes or six-bit values) and, in `count`, how
// many input bytes or characters it holds.
struct Base64Block {
  uint8_t data[4];
  uint8_t count;
};

class CBase64 {
 public:
  CBase64();
  CBase64(const CBase64&) = delete;
  CBase64& operator=(const CBase64&) = delete;

  // Virtual operations, in the order of their slots.
  virtual ~CBase64();
  // Encodes `size` bytes into textBuffer; gives the text's length. Null data counts as empty.
  virtual uint32_t Encode(const uint8_t* data, uint32_t size);
  // Decodes `size` characters into plainBuffer; gives plainLength. Null text counts as empty.
  virtual uint32_t Decode(const char* text, uint32_t size);
  // Null does nothing and gives 0; otherwise Encode or Decode with strlen.
  virtual uint32_t EncodeString(const char* text);
  virtual uint32_t DecodeString(const char* text);
  // plainBuffer, with plainLength stored in *size (when not null).
  virtual uint8_t* GetPlain(uint32_t* size);
  virtual uint8_t* GetPlainBuffer();
  virtual char* GetTextBuffer();
  // Make room for `size` bytes as described above and set the matching length to 0. 0 when an
  // allocation was needed and failed, else 1 (also when the buffer is null and big enough).
  virtual int ReserveText(uint32_t size);
  virtual int ReservePlain(uint32_t size);
  // ReserveText(size), then copies each character for which IsWhiteSpace gives 0.
  virtual void FilterText(const char* text, uint32_t size);
  // ReservePlain(size), copy, plainLength = size.
  virtual void SetPlain(const uint8_t* data, uint32_t size);
  // Four characters for the block's bytes; `=` in place of the last 3 - count of them.
  virtual void EncodeBlock(const Base64Block& block, char* target);
  // Writes the 3 bytes JoinQuad makes of the block's values; gives how many of the 4 values are
  // below 255 (not padding).
  virtual int DecodeBlock(const Base64Block& block, uint8_t* target);
  // 3 bytes to 4 six-bit values.
  virtual void SplitTriple(uint8_t* sextets, const uint8_t* bytes);
  // 4 values, each taken & 63, to 3 bytes.
  virtual void JoinQuad(uint8_t* bytes, const uint8_t* sextets);
  // 1 for codes 7 to 13 and the blank (bell and backspace count), else 0.
  virtual int IsWhiteSpace(char character);

  uint32_t plainCapacity() const { return plainCapacity_; }
  uint32_t textCapacity() const { return textCapacity_; }
  uint32_t plainLength() const { return plainLength_; }
  uint32_t textLength() const { return textLength_; }

 protected:
  uint8_t* plainBuffer_;
  char* textBuffer_;
  uint32_t plainCapacity_;
  uint32_t textCapacity_;
  uint32_t plainLength_;
  uint32_t textLength_;

 private:
  bool HasOwnSteps() const;
  void EncodeGroups(const uint8_t* data, uint32_t size);
  void DecodeGroups();
  uint32_t FilterAndCount(const char* text, uint32_t size);

  // Blocks that Encode took from plainBuffer; freed with the object.
  std::vector<uint8_t*> lostBlocks_;
};

}  // namespace vsm

#endif  // VSM_SUPPORT_BASE64_H_
