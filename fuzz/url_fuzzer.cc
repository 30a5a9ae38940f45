// The URL translators: a method name and a query from the input become JSON commands.
//
// Input: the method name, a NUL byte, the query (also the path of EncodeFileUrl). The styled
// commands must parse and carry the id, the method and the parameters the query names. The
// hand-built command of EncodeMethodUrl escapes nothing, so it must parse exactly when its id and
// method need no escaping and `p` is one complete JSON value by the strict grammar, checked
// here independently of the protocol's reader.
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_support.h"
#include "protocol/json_command.h"
#include "protocol/url_command_encoder.h"

namespace {

using vsm::JsonCommand;
using vsm::fuzz::FuzzCheck;

bool NeedsEscaping(const std::string& text) {
  for (unsigned char c : text) {
    if (c < 0x20 || c == '"' || c == '\\' || c == 0x7F) return true;
  }
  return false;
}

// One complete JSON value by the strict grammar (no comments, no trailing commas, no '+', no
// raw control characters in strings), with the two limits of any reader of doubles and of
// UTF-16 escapes: a number must be finite, and a high surrogate escape needs an escape behind it.
class StrictJson {
 public:
  explicit StrictJson(const std::string& text) : p_(text.data()), end_(p_ + text.size()) {}
  bool IsOneValue() {
    Space();
    if (!Value(0)) return false;
    Space();
    return p_ == end_;
  }

 private:
  void Space() {
    while (p_ < end_ && (*p_ == ' ' || *p_ == '\t' || *p_ == '\n' || *p_ == '\r')) ++p_;
  }
  bool Take(char c) {
    if (p_ == end_ || *p_ != c) return false;
    ++p_;
    return true;
  }
  bool Word(const char* word) {
    const size_t length = std::strlen(word);
    if (static_cast<size_t>(end_ - p_) < length || std::memcmp(p_, word, length) != 0) return false;
    p_ += length;
    return true;
  }
  bool Digits() {
    const char* start = p_;
    while (p_ < end_ && *p_ >= '0' && *p_ <= '9') ++p_;
    return p_ != start;
  }
  bool Number() {
    const char* start = p_;
    Take('-');
    if (!Take('0') && !Digits()) return false;
    if (Take('.') && !Digits()) return false;
    if (p_ < end_ && (*p_ == 'e' || *p_ == 'E')) {
      ++p_;
      if (!Take('+')) Take('-');
      if (!Digits()) return false;
    }
    return std::isfinite(std::strtod(std::string(start, p_).c_str(), nullptr));
  }
  bool Hex4() {
    for (int i = 0; i < 4; ++i, ++p_) {
      if (p_ == end_ || !std::isxdigit(static_cast<unsigned char>(*p_))) return false;
    }
    return true;
  }
  bool String() {
    if (!Take('"')) return false;
    while (p_ < end_) {
      const auto c = static_cast<unsigned char>(*p_++);
      if (c == '"') return true;
      if (c < 0x20) return false;
      if (c != '\\') continue;
      if (p_ == end_) return false;
      const char escape = *p_++;
      if (escape == 'u') {
        const bool high = end_ - p_ >= 2 && (p_[0] == 'd' || p_[0] == 'D') &&
                          std::strchr("89abAB", p_[1]) != nullptr;
        if (!Hex4() || (high && !(Word("\\u") && Hex4()))) return false;
      } else if (escape == '\0' || std::strchr("\"\\/bfnrt", escape) == nullptr) {
        return false;
      }
    }
    return false;
  }
  bool Value(int depth) {
    if (depth > 500 || p_ == end_) return false;
    switch (*p_) {
      case '[':
      case '{': {
        const bool object = *p_++ == '{';
        Space();
        if (Take(object ? '}' : ']')) return true;
        do {
          Space();
          if (object && !(String() && (Space(), Take(':')))) return false;
          Space();
          if (!Value(depth + 1)) return false;
          Space();
        } while (Take(','));
        return Take(object ? '}' : ']');
      }
      case '"':
        return String();
      case 't':
        return Word("true");
      case 'f':
        return Word("false");
      case 'n':
        return Word("null");
      default:
        return Number();
    }
  }

  const char* p_;
  const char* const end_;
};

std::string Value(const vsm::UrlQuery& query, const char* key) {
  const auto found = query.find(key);
  return found == query.end() ? std::string() : found->second;
}

void CheckStyled(const std::string& command, const std::string& id, const char* method,
                 int parameters, const std::string& query) {
  if (command.empty()) return;
  const JsonCommand parsed(command);
  FuzzCheck(parsed.IsValid() && parsed.GetId() == std::string(id.c_str()) &&
                parsed.GetName() == method && parsed.GetParameterCount() == parameters,
            "a styled command carries what the query asked", query + "\n---\n" + command);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto fields = vsm::fuzz::SplitFields(data, size, 2);
  const std::string& method = fields[0];
  const std::string query = fields.size() > 1 ? fields[1] : std::string();
  const vsm::UrlCommandEncoder encoder;
  const vsm::UrlQuery map = encoder.ParseUrlQuery(query);
  const std::string id = Value(map, "id");

  CheckStyled(encoder.EncodeFileUrl(query), "0", "GetFile", 1, query);
  CheckStyled(encoder.EncodeThumbnailUrl(query), id, "GetImageByIndex", 2, query);
  int present = 0;
  for (const char* key : {"index", "width", "height", "act", "webcam"}) {
    present += Value(map, key).empty() ? 0 : 1;
  }
  CheckStyled(encoder.EncodeImageUrl(query), id, "GetImageByIndex", present, query);

  const std::string command = encoder.EncodeMethodUrl(method, query);
  FuzzCheck(command.empty() == id.empty(), "a method command needs an id", query);
  const std::string p = Value(map, "p");
  // Command texts travel as C strings: a NUL in `p` ends the command early.
  if (command.empty() || NeedsEscaping(id) || NeedsEscaping(method) ||
      p.find('\0') != std::string::npos || (!p.empty() && !StrictJson(p).IsOneValue())) {
    return 0;
  }
  const JsonCommand parsed(command);
  FuzzCheck(parsed.IsValid() && parsed.GetId() == id && parsed.GetName() == method,
            "a method command parses", command);
  return 0;
}
