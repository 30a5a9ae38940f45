#include "image/quantizer.h"

#include <algorithm>
#include <cstring>

#include "image/image_layout.h"
#include "support/tracked_heap.h"

namespace vsm {

CQuantizer::CQuantizer(uint32_t colors, uint32_t bits)
    : root_(nullptr),
      leafCount_(0),
      reducible_(),
      maxColors_(std::max<uint32_t>(colors, 16)),
      outputColors_(colors),
      colorBits_(std::min<uint32_t>(bits, 8)) {}

CQuantizer::~CQuantizer() {
  if (root_ != nullptr) FreeTree(root_);
}

bool CQuantizer::AddImage(const void* dib) {
  const uint8_t* block = static_cast<const uint8_t*>(dib);
  const DibHeaderFields header = ReadDibHeader(block);
  const uint32_t bits = header.bitCount;
  if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return false;
  const uint8_t* pixels = block + header.headerSize + 4 * static_cast<size_t>(header.colorsUsed);
  // Palette entries are read at the fixed place behind a 40-byte header, whatever the header
  // size says.
  const uint8_t* palette = block + kDibHeaderSize;
  const size_t stride = static_cast<size_t>(RowBytes(header.width, bits));
  for (int32_t y = 0; y < header.height; ++y) {
    const uint8_t* row = pixels + y * stride;
    for (int32_t x = 0; x < header.width; ++x) {
      bool inserted;
      if (bits == 24) {
        const uint8_t* pixel = row + 3 * static_cast<size_t>(x);
        inserted = InsertColor(pixel[2], pixel[1], pixel[0], 0);
      } else {
        const uint8_t* entry = palette + 4 * IndexInRow(row, x, bits);
        inserted = InsertColor(entry[2], entry[1], entry[0], entry[3]);
      }
      if (!inserted) return false;
      while (leafCount_ > maxColors_) {
        if (!MergeDeepestNode()) break;
      }
    }
  }
  return true;
}

bool CQuantizer::InsertColor(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
  QuantizerNode** slot = &root_;
  for (uint32_t level = 0;; ++level) {
    if (*slot == nullptr && (*slot = NewNode(level)) == nullptr) return false;
    QuantizerNode* node = *slot;
    if (node->isLeaf != 0) {
      ++node->pixelCount;
      node->redSum += red;
      node->greenSum += green;
      node->blueSum += blue;
      node->alphaSum += alpha;
      return true;
    }
    const uint32_t mask = 0x80u >> level, shift = 7 - level;
    const uint32_t child =
        ((red & mask) >> shift) << 2 | ((green & mask) >> shift) << 1 | ((blue & mask) >> shift);
    slot = &node->children[child];
  }
}

QuantizerNode* CQuantizer::NewNode(uint32_t level) {
  QuantizerNode* node =
      static_cast<QuantizerNode*>(TrackedAlloc(kTrackedZeroFill, sizeof(QuantizerNode)));
  if (node == nullptr) return nullptr;
  if (level == colorBits_) {
    node->isLeaf = 1;
    ++leafCount_;
  } else {
    // The root is a branch of level 0 too, so it sits in the first chain.
    node->next = reducible_[level];
    reducible_[level] = node;
  }
  return node;
}

bool CQuantizer::MergeDeepestNode() {
  if (colorBits_ == 0) return false;
  uint32_t level = colorBits_ - 1;
  while (reducible_[level] == nullptr && level > 0) --level;
  // The chain's head, the branch made last at that level: creation order alone decides.
  QuantizerNode* node = reducible_[level];
  if (node == nullptr) return false;
  reducible_[level] = node->next;
  uint32_t red = 0, green = 0, blue = 0, alpha = 0, children = 0;
  for (QuantizerNode*& child : node->children) {
    if (child == nullptr) continue;
    node->pixelCount += child->pixelCount;
    red += child->redSum;
    green += child->greenSum;
    blue += child->blueSum;
    alpha += child->alphaSum;
    ++children;
    TrackedFree(child);
    child = nullptr;
  }
  node->redSum = red;
  node->greenSum = green;
  node->blueSum = blue;
  node->alphaSum = alpha;
  node->isLeaf = 1;
  leafCount_ = leafCount_ + 1 - children;
  return true;
}

void CQuantizer::FreeTree(QuantizerNode*& node) {
  for (QuantizerNode*& child : node->children) {
    if (child != nullptr) FreeTree(child);
  }
  TrackedFree(node);
  node = nullptr;
}

void CQuantizer::CollectLeaves(const QuantizerNode* node, uint8_t* entries, uint32_t capacity,
                               uint32_t& index, uint32_t* counts) const {
  if (node->isLeaf != 0) {
    if (index >= capacity) return;
    const uint32_t count = node->pixelCount;
    uint8_t* entry = entries + 4 * static_cast<size_t>(index);
    entry[0] = static_cast<uint8_t>(count == 0 ? 0 : node->blueSum / count);
    entry[1] = static_cast<uint8_t>(count == 0 ? 0 : node->greenSum / count);
    entry[2] = static_cast<uint8_t>(count == 0 ? 0 : node->redSum / count);
    entry[3] = static_cast<uint8_t>(count == 0 ? 0 : node->alphaSum / count);
    if (counts != nullptr) counts[index] = count;
    ++index;
    return;
  }
  for (const QuantizerNode* child : node->children) {
    if (child != nullptr) CollectLeaves(child, entries, capacity, index, counts);
  }
}

void CQuantizer::WritePalette(void* entries) const {
  uint8_t* out = static_cast<uint8_t*>(entries);
  uint32_t index = 0;
  if (root_ == nullptr || outputColors_ == 0) return;
  if (outputColors_ >= 16) {
    CollectLeaves(root_, out, outputColors_, index, nullptr);
    return;
  }
  // Fewer than 16 colours: the tree still holds up to 16 leaves, averaged here in groups.
  uint8_t leaves[16 * 4] = {};
  uint32_t counts[16] = {};
  CollectLeaves(root_, leaves, 16, index, counts);
  if (leafCount_ <= outputColors_) {
    std::memcpy(out, leaves, 4 * static_cast<size_t>(std::min<uint32_t>(leafCount_, 16)));
    return;
  }
  for (uint32_t j = 0; j < outputColors_; ++j) {
    const uint32_t first = j * leafCount_ / outputColors_;
    const uint32_t end = std::min<uint32_t>((j + 1) * leafCount_ / outputColors_, 16);
    // 64-bit sums: channel times count passes 32 bits on pictures of some 17 million pixels.
    uint64_t total = 0, sums[4] = {};
    for (uint32_t leaf = first; leaf < end; ++leaf) {
      total += counts[leaf];
      for (int c = 0; c < 4; ++c)
        sums[c] += static_cast<uint64_t>(leaves[4 * leaf + c]) * counts[leaf];
    }
    for (int c = 0; c < 4; ++c)
      out[4 * j + c] = static_cast<uint8_t>(total == 0 ? 0 : sums[c] / total);
  }
}

}  // namespace vsm
