#include "support/string_split.h"

#include <cstring>

#include "support/tracked_heap.h"

namespace vsm {

namespace {

// The one splitting rule; `emit(data, length)` receives each piece in order.
template <typename Emit>
void ForEachPiece(const char* text, size_t length, char delimiter, Emit emit) {
  size_t start = 0;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == delimiter) {
      emit(text + start, i - start);
      start = i + 1;
    }
  }
  if (start < length) emit(text + start, length - start);
}

std::vector<std::string> Split(const char* text, size_t length, char delimiter) {
  std::vector<std::string> pieces;
  ForEachPiece(text, length, delimiter,
               [&pieces](const char* data, size_t size) { pieces.emplace_back(data, size); });
  return pieces;
}

}  // namespace

std::vector<std::string> SplitString(const std::string& text, char delimiter) {
  return Split(text.data(), text.size(), delimiter);
}

std::vector<std::string> SplitString(const char* text, char delimiter) {
  if (text == nullptr) return {};
  return Split(text, std::strlen(text), delimiter);
}

int32_t CountParts(const char* text, char delimiter) {
  if (text == nullptr || text[0] == '\0') return 0;
  int32_t count = 0;
  size_t length = std::strlen(text);
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == delimiter) ++count;
  }
  return text[length - 1] == delimiter ? count : count + 1;
}

int SplitToArray(const char* text, char delimiter, ArrayOfStrings* array, int32_t* count) {
  if (array == nullptr || count == nullptr) return 0;
  *array = nullptr;
  *count = 0;
  int32_t total = CountParts(text, delimiter);
  if (total == 0) return 1;
  ArrayOfStrings pieces = static_cast<ArrayOfStrings>(
      TrackedAlloc(kTrackedZeroFill, static_cast<size_t>(total) * sizeof(char*)));
  if (pieces == nullptr) return 0;
  int32_t made = 0;
  bool failed = false;
  ForEachPiece(text, std::strlen(text), delimiter, [&](const char* data, size_t size) {
    if (failed) return;
    char* piece = static_cast<char*>(TrackedAlloc(0, size + 1));
    if (piece == nullptr) {
      failed = true;
      return;
    }
    std::memcpy(piece, data, size);
    piece[size] = '\0';
    pieces[made++] = piece;
  });
  if (failed) {
    FreeArray(pieces, made);
    return 0;
  }
  *array = pieces;
  *count = made;
  return 1;
}

void FreeArray(ArrayOfStrings array, int32_t count) {
  if (array == nullptr) return;
  for (int32_t i = 0; i < count; ++i) TrackedFree(array[i]);
  TrackedFree(array);
}

}  // namespace vsm
