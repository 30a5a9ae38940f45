#include "support/string_split.h"

#include <cstring>

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

}  // namespace vsm
