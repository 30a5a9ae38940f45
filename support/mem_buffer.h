// CMemBuffer: a growable, file-like block of memory with a position, a length and a capacity.
//
// Growth is linear by `growBytes` (0 means the block can't grow). Blocks come from the tracked
// heap through the virtual hooks Alloc, Realloc and Free, which a subclass may replace. All sizes
// are 32 bits; a write that would pass 0xFFFFFFFF is refused. Failures show as 0 or null; nothing
// is printed or thrown. Not thread-safe: an instance belongs to one thread.
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
  virtual ~CMemBuffer();
  virtual uint32_t GetPosition();
  virtual uint32_t Seek(int64_t offset, uint32_t origin);
  virtual int SetLength(uint32_t newLength);
  virtual uint32_t Read(void* target, uint32_t count);
  virtual uint32_t Write(const void* source, uint32_t count);
  virtual void Close();
  virtual uint32_t GetLength();

  // The same as the adopting constructor, on a live object; Close is not called.
  void Attach(uint8_t* block, uint32_t size, bool ownsBuffer, uint32_t growBytes);
  // Gives the block to the caller and empties the object.
  uint8_t* Detach();
  // A new TrackedAlloc block with a copy of the content (one zero byte when empty), then Close.
  // Null when the allocation fails, leaving the object alone.
  uint8_t* DetachCopy();
  // Writes the text without its NUL; 1 when all of it went out.
  int WriteString(const char* text);
  // Writes `count` as 4 bytes in host order, then the data (nothing for a null source and 0).
  int WriteBlock(const void* source, uint32_t count);
  int WriteBlockString(const char* text);
  // Reads a 4-byte count, then the data: into *block + offset (at most `limit` bytes, 0xFFFFFFFF
  // meaning no limit), or, with a null *block, no limit and offset 0, into a new
  // TrackedAlloc(64, count + 1) block stored in *block. Returns the count read.
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
