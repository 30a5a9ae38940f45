// CQuantizer: finds a palette for a picture with a colour tree.
//
// Every pixel descends the tree by one bit of red, green and blue per level (top bit first) down
// to `colorBits` levels; leaves sum what reaches them. Whenever there are more than `maxColors`
// leaves, the most recently made branch of the deepest level is folded into its parent. The
// palette is the leaves' means in tree order (by the interleaved bits of red, green, blue), not
// by frequency. Sums are 32 bits and wrap on very large pictures.
//
// Use once: construct, AddImage (more than once adds up), WritePalette, destroy. Nodes come
// from the tracked heap. Not thread-safe.
#ifndef VSM_IMAGE_QUANTIZER_H_
#define VSM_IMAGE_QUANTIZER_H_

#include <cstdint>

namespace vsm {

struct QuantizerNode {
  uint8_t isLeaf;
  uint32_t pixelCount;
  uint32_t redSum;
  uint32_t greenSum;
  uint32_t blueSum;
  uint32_t alphaSum;  // the fourth byte of palette entries; 0 for 24-bit pixels
  QuantizerNode* children[8];
  QuantizerNode* next;  // the next node of its level's chain of branches
};

class CQuantizer {
 public:
  // At most max(colors, 16) leaves; the tree is min(bits, 8) levels deep.
  CQuantizer(uint32_t colors, uint32_t bits);
  CQuantizer(const CQuantizer&) = delete;
  CQuantizer& operator=(const CQuantizer&) = delete;
  virtual ~CQuantizer();

  // Feeds every pixel of a packed DIB of 1, 4, 8 or 24 bits (pixels at header size + 4 * colours
  // used, palette entries read at offset 40). False for another depth, or when a node can't be
  // allocated (the tree then holds what was added so far).
  bool AddImage(const void* dib);
  // Writes `colors` entries (blue, green, red, fourth byte) into `entries`, which the caller
  // provides zeroed: the leaves' means, or below 16 colours the leaves averaged in groups,
  // weighted by their pixel counts. Entries past the leaves stay as they were.
  void WritePalette(void* entries) const;
  uint32_t GetLeafCount() const { return leafCount_; }

 private:
  bool InsertColor(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha);
  QuantizerNode* NewNode(uint32_t level);
  // False when no branch is left to fold.
  bool MergeDeepestNode();
  void FreeTree(QuantizerNode*& node);
  void CollectLeaves(const QuantizerNode* node, uint8_t* entries, uint32_t capacity,
                     uint32_t& index, uint32_t* counts) const;

  QuantizerNode* root_;
  uint32_t leafCount_;
  QuantizerNode* reducible_[9];
  uint32_t maxColors_;
  uint32_t outputColors_;
  uint32_t colorBits_;
};

}  // namespace vsm

#endif  // VSM_IMAGE_QUANTIZER_H_
