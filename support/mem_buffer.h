// CMemBuffer: a growable, file-like block of memory with a position, a length and a capacity.
//
// Growth is linear by `growBytes` (0 means the block can't grow). Seek may leave the position
// past the length; a Write there leaves the gap's bytes unset. Blocks come from the tracked
// heap through the virtual hooks Alloc, Realloc and Free, which a subclass may replace. All sizes
// are 32 bits; a write that would pass 0xFFFFFFFF is refused. Failures show as 0 or null; nothing
// is printed or thrown. Not thread-safe: an instance belongs to one thread.
//
// No export of the module reaches this code: only the host name encoder (punycode.h) uses it.
#ifndef VSM_SUPPORT_MEM_BUFFER_H_
#define VSM_SUPPORT_MEM_BUFFER_H_

#include <cstdint>

namespace vsm {

class CMemBuffer {
 public:
  // Empty, owning, nothing allocated.
  explicit CMemBuffer(uint32_t growBytes);
  // Adopts an outside block: capacity `size`; length 0 when `growBytes` is non-zero, else `size`.
  CMemBuffer(uint8_t* block, uint32_t size, bool ownsBuffer, uint32_t growBytes);
  CMemBuffer(const CMemBuffer&) = delete;
  CMemBuffer& operator=(const CMemBuffer&) = delete;

  // Virtual operations, in the order of their slots.
  virtual uint8_t* Alloc(uint32_t size);
  virtual uint8_t* Realloc(uint8_t* block, uint32_t size);
  virtual void Free(uint8_t* block);
  virtual int GrowBuffer(uint32_t size);
  // Closes with this class's own hooks (a subclass's are gone by then).
  virtual ~CMemBuffer();
  virtual uint32_t GetPosition();
  // Origin 0: from the start, 1: from the position, 2: from the length (offset <= 0 only).
  // Another origin, or a target below 0 or past 32 bits, leaves the position alone. A target past
  // the length grows the block (or stops at the length when it can't); the length stays.
  // Gives the new position.
  virtual uint32_t Seek(int64_t offset, uint32_t origin);
  // Grows the block when needed (0 when it can't) and pulls the position back to the new length.
  virtual int SetLength(uint32_t newLength);
  // Gives the bytes copied: at most up to the length, 0 from a position past it.
  virtual uint32_t Read(void* target, uint32_t count);
  // Gives `count`, or 0 when the block can't grow enough.
  virtual uint32_t Write(const void* source, uint32_t count);
  virtual void Close();
  virtual uint32_t GetLength();

  // The same as the adopting constructor, on a live object; Close is not called. An owned
  // outside block is given back with TrackedFree when the object closes, so it must come from
  // TrackedAlloc or malloc. Such a block can't grow: Realloc needs a tracked handle.
  void Attach(uint8_t* block, uint32_t size, bool ownsBuffer, uint32_t growBytes);
  // Gives the block to the caller and empties the object.
  uint8_t* Detach();
  // A new TrackedAlloc block with a copy of the content (one zero byte when empty), then Close.
  // Null when the allocation fails, leaving the object alone.
  uint8_t* DetachCopy();
  // Writes the text without its NUL; 1 when all of it went out (so 1 for "", 0 for null).
  int WriteString(const char* text);
  // Writes `count` as 4 bytes in host order, then the data; 1 when all of it went out. A null
  // source with count 0 writes the count alone; with a non-zero count it writes nothing and
  // gives 0. WriteBlockString writes strlen(text) and the text; null counts as empty.
  int WriteBlock(const void* source, uint32_t count);
  int WriteBlockString(const char* text);
  // Reads a 4-byte count, then the data, and gives the number of data bytes read; 0 when the
  // count is missing or 0. With a non-null *block the data goes to *block + offset, at most
  // `limit` bytes (0xFFFFFFFF: no limit; the rest of a cut block stays unread). With a null
  // *block, no limit and offset 0, *block receives a new zeroed TrackedAlloc block of count + 1
  // bytes (fewer when the count claims more than is left), so the data ends with a NUL.
  uint32_t ReadBlock(uint8_t** block, uint32_t offset, uint32_t limit);

  uint32_t growBytes() const { return growBytes_; }
  uint32_t position() const { return position_; }
  uint32_t capacity() const { return capacity_; }
  uint32_t length() const { return length_; }
  uint8_t* buffer() const { return buffer_; }

 protected:
  uint32_t growBytes_;
  uint32_t position_;
  uint32_t capacity_;
  uint32_t length_;
  uint8_t* buffer_;
  bool ownsBuffer_;
  void* handle_;
};

}  // namespace vsm

#endif  // VSM_SUPPORT_MEM_BUFFER_H_
