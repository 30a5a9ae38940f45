#include "support/ini_key_reader.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vsm {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

// Whether the document's strcasecmp order holds `name` equal to `wanted`, a name with no NUL:
// `name` ends at its first NUL, and what is left matches letter for letter, ignoring case as
// the C library does. Lengths are compared first, since most names differ in length.
bool SameName(std::string_view name, std::string_view wanted) {
  if (name.size() < wanted.size()) return false;
  if (name.size() > wanted.size() && name[wanted.size()] != '\0') return false;
  return strncasecmp(name.data(), wanted.data(), wanted.size()) == 0;
}

}  // namespace

bool FindIniValue(std::string_view text, const char* section, const char* key,
                  std::string_view* value) {
  if (section == nullptr || key == nullptr) return false;
  const std::string_view wantedSection = TrimBlanks(section);
  const std::string_view wantedKey = TrimBlanks(key);
  bool inSection = false;
  bool found = false;
  const char* cursor = text.data();
  const char* const textEnd = cursor + text.size();
  while (cursor < textEnd) {
    const char* newline = static_cast<const char*>(memchr(cursor, '\n', textEnd - cursor));
    const char* lineEnd = newline != nullptr ? newline : textEnd;
    const char* begin = cursor;
    cursor = newline != nullptr ? newline + 1 : textEnd;

    while (lineEnd > begin && IsLineEnd(lineEnd[-1])) --lineEnd;
    while (begin < lineEnd && IsBlank(*begin)) ++begin;
    if (begin == lineEnd) continue;
    const std::string_view line(begin, static_cast<size_t>(lineEnd - begin));

    if (line.front() == '[') {
      size_t lastSolid = line.size();
      while (lastSolid > 0 && (IsBlank(line[lastSolid - 1]) || IsLineEnd(line[lastSolid - 1]))) {
        --lastSolid;
      }
      if (line[lastSolid - 1] == ']') {
        // Cut as if the ']' closed the line, as the document does ("[abc] " opens "abc]").
        inSection = SameName(TrimBlanks(line.substr(1, line.size() - 2)), wantedSection);
        continue;
      }
    }
    if (!inSection) continue;
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) continue;
    if (SameName(TrimBlanks(line.substr(0, equals)), wantedKey)) {
      *value = line.substr(equals + 1);
      found = true;
    }
  }
  return found;
}

bool ReadIniValue(const char* fileName, const char* section, const char* key, std::string* value) {
  if (fileName == nullptr) return false;
  const int file = open(fileName, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  // A configuration file fits the stack buffer; a bigger one goes on in `heap`.
  char stackBuffer[4096];
  std::string heap;
  size_t held = 0;
  for (;;) {
    char* target = stackBuffer + held;
    size_t room = sizeof(stackBuffer) - held;
    if (!heap.empty() || room == 0) {
      if (heap.empty()) heap.assign(stackBuffer, held);
      heap.resize(held + sizeof(stackBuffer));
      target = &heap[held];
      room = sizeof(stackBuffer);
    }
    const ssize_t count = read(file, target, room);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    held += static_cast<size_t>(count);
    // A regular file gives less than asked only at its end; stopping here saves the read that
    // would only confirm it, which is a good part of the cost of a small file.
    if (static_cast<size_t>(count) < room) break;
  }
  close(file);
  const std::string_view text(heap.empty() ? stackBuffer : heap.data(), held);
  std::string_view found;
  if (!FindIniValue(text, section, key, &found)) return false;
  value->assign(found.data(), found.size());
  return true;
}

}  // namespace vsm
