#include "protocol/json_reader.h"

#include <cstdint>
#include <cstring>
#include <sstream>
#include <vector>

namespace vsm {

namespace {

// The grammar of JsonCpp's classic Json::Reader, which the protocol has always used, with one
// change: nesting past kMaxJsonNesting fails the parse instead of throwing. The first error
// ends the parse; the classic reader recovers to collect more messages, but its result is
// false all the same, and nobody reads the messages.
class ClassicReader {
 public:
  ClassicReader(const std::string& text, bool collectComments)
      : begin_(text.data()),
        end_(text.data() + text.size()),
        current_(begin_),
        collectComments_(collectComments) {}

  bool Parse(Json::Value* root) {
    nodes_.push_back(root);
    bool ok = ReadValue();
    Token token;
    SkipCommentTokens(&token);
    if (collectComments_ && !commentsBefore_.empty()) {
      root->setComment(commentsBefore_, Json::commentAfter);
    }
    return ok;
  }

 private:
  enum TokenType {
    kEndOfStream,
    kObjectBegin,
    kObjectEnd,
    kArrayBegin,
    kArrayEnd,
    kString,
    kNumber,
    kTrue,
    kFalse,
    kNull,
    kArraySeparator,
    kMemberSeparator,
    kComment,
    kError
  };

  struct Token {
    TokenType type = kError;
    const char* start = nullptr;
    const char* end = nullptr;
  };

  Json::Value& CurrentValue() { return *nodes_.back(); }

  bool ReadValue() {
    if (nodes_.size() > static_cast<size_t>(kMaxJsonNesting)) return false;
    Token token;
    SkipCommentTokens(&token);
    if (collectComments_ && !commentsBefore_.empty()) {
      CurrentValue().setComment(commentsBefore_, Json::commentBefore);
      commentsBefore_.clear();
    }
    bool ok = true;
    switch (token.type) {
      case kObjectBegin:
        ok = ReadObject();
        break;
      case kArrayBegin:
        ok = ReadArray();
        break;
      case kNumber:
        ok = DecodeNumber(token);
        break;
      case kString:
        ok = DecodeString(token);
        break;
      case kTrue:
      case kFalse:
      case kNull:
        StoreLiteral(token.type);
        break;
      default:
        return false;
    }
    if (collectComments_) {
      lastValueEnd_ = current_;
      lastValue_ = &CurrentValue();
    }
    return ok;
  }

  // The leaf decoders stay out of line: ReadValue recurses once per nesting level, and its frame
  // is what a deeply nested text costs in stack.
  __attribute__((noinline)) void StoreLiteral(TokenType type) {
    Json::Value literal = type == kNull ? Json::Value() : Json::Value(type == kTrue);
    CurrentValue().swapPayload(literal);
  }

  void SkipCommentTokens(Token* token) {
    do {
      ReadToken(token);
    } while (token->type == kComment);
  }

  char NextChar() { return current_ == end_ ? '\0' : *current_++; }

  void SkipSpaces() {
    while (current_ != end_ &&
           (*current_ == ' ' || *current_ == '\t' || *current_ == '\r' || *current_ == '\n')) {
      ++current_;
    }
  }

  bool Match(const char* pattern, int length) {
    if (end_ - current_ < length) return false;
    for (int i = length - 1; i >= 0; --i) {
      if (current_[i] != pattern[i]) return false;
    }
    current_ += length;
    return true;
  }

  bool ReadToken(Token* token) {
    SkipSpaces();
    token->start = current_;
    bool ok = true;
    char c = NextChar();
    switch (c) {
      case '{':
        token->type = kObjectBegin;
        break;
      case '}':
        token->type = kObjectEnd;
        break;
      case '[':
        token->type = kArrayBegin;
        break;
      case ']':
        token->type = kArrayEnd;
        break;
      case ',':
        token->type = kArraySeparator;
        break;
      case ':':
        token->type = kMemberSeparator;
        break;
      case '\0':
        token->type = kEndOfStream;
        break;  // also a NUL byte inside the text
      case '"':
        token->type = kString;
        ok = ReadString();
        break;
      case '/':
        token->type = kComment;
        ok = ReadComment();
        break;
      case 't':
        token->type = kTrue;
        ok = Match("rue", 3);
        break;
      case 'f':
        token->type = kFalse;
        ok = Match("alse", 4);
        break;
      case 'n':
        token->type = kNull;
        ok = Match("ull", 3);
        break;
      default:
        if ((c >= '0' && c <= '9') || c == '-') {
          token->type = kNumber;
          ReadNumber();
        } else {
          ok = false;
        }
        break;
    }
    if (!ok) token->type = kError;
    token->end = current_;
    return ok;
  }

  static bool ContainsNewLine(const char* begin, const char* end) {
    for (const char* p = begin; p < end; ++p) {
      if (*p == '\n' || *p == '\r') return true;
    }
    return false;
  }

  bool ReadComment() {
    const char* commentBegin = current_ - 1;
    char c = NextChar();
    bool ok = false;
    if (c == '*') {
      ok = ReadCStyleComment();
    } else if (c == '/') {
      ok = ReadCppStyleComment();
    }
    if (!ok) return false;
    if (collectComments_) {
      Json::CommentPlacement placement = Json::commentBefore;
      if (lastValueEnd_ && !ContainsNewLine(lastValueEnd_, commentBegin) &&
          (c != '*' || !ContainsNewLine(commentBegin, current_))) {
        placement = Json::commentAfterOnSameLine;
      }
      AddComment(commentBegin, current_, placement);
    }
    return true;
  }

  static std::string NormalizeEol(const char* begin, const char* end) {
    std::string normalized;
    normalized.reserve(static_cast<size_t>(end - begin));
    for (const char* p = begin; p != end;) {
      char c = *p++;
      if (c == '\r') {
        if (p != end && *p == '\n') ++p;
        normalized += '\n';
      } else {
        normalized += c;
      }
    }
    return normalized;
  }

  void AddComment(const char* begin, const char* end, Json::CommentPlacement placement) {
    std::string normalized = NormalizeEol(begin, end);
    if (placement == Json::commentAfterOnSameLine) {
      lastValue_->setComment(normalized, placement);
    } else {
      commentsBefore_ += normalized;
    }
  }

  bool ReadCStyleComment() {
    while (current_ + 1 < end_) {
      char c = NextChar();
      if (c == '*' && *current_ == '/') break;
    }
    return NextChar() == '/';
  }

  bool ReadCppStyleComment() {
    while (current_ != end_) {
      char c = NextChar();
      if (c == '\n') break;
      if (c == '\r') {
        if (current_ != end_ && *current_ == '\n') NextChar();
        break;
      }
    }
    return true;
  }

  // Digits, an optional fraction and an optional exponent; what a number must look like is
  // decided later, when it is decoded.
  void ReadNumber() {
    const char* p = current_;
    char c = '0';
    auto advance = [&] { c = (current_ = p) < end_ ? *p++ : '\0'; };
    while (c >= '0' && c <= '9') advance();
    if (c == '.') {
      advance();
      while (c >= '0' && c <= '9') advance();
    }
    if (c == 'e' || c == 'E') {
      advance();
      if (c == '+' || c == '-') advance();
      while (c >= '0' && c <= '9') advance();
    }
  }

  bool ReadString() {
    char c = '\0';
    while (current_ != end_) {
      c = NextChar();
      if (c == '\\') {
        NextChar();
      } else if (c == '"') {
        break;
      }
    }
    return c == '"';
  }

  bool ReadObject() {
    Json::Value object(Json::objectValue);
    CurrentValue().swapPayload(object);
    Token tokenName;
    std::string name;
    while (ReadToken(&tokenName)) {
      bool ok = true;
      while (tokenName.type == kComment && ok) ok = ReadToken(&tokenName);
      if (!ok) break;
      // Only an empty name before it lets "}" close the object, so {"":1,} parses.
      if (tokenName.type == kObjectEnd && name.empty()) return true;
      name.clear();
      if (tokenName.type != kString || !DecodeString(tokenName, &name)) return false;
      // Member names are C strings, as the classic library kept them: "a\u0000b" names the
      // member "a". Otherwise two members would write out under one name.
      name.resize(std::strlen(name.c_str()));
      Token colon;
      if (!ReadToken(&colon) || colon.type != kMemberSeparator) return false;
      nodes_.push_back(&CurrentValue()[name]);
      ok = ReadValue();
      nodes_.pop_back();
      if (!ok) return false;
      Token comma;
      if (!ReadToken(&comma) ||
          (comma.type != kObjectEnd && comma.type != kArraySeparator && comma.type != kComment)) {
        return false;
      }
      ok = true;
      while (comma.type == kComment && ok) ok = ReadToken(&comma);
      if (comma.type == kObjectEnd) return true;
    }
    return false;
  }

  bool ReadArray() {
    Json::Value array(Json::arrayValue);
    CurrentValue().swapPayload(array);
    SkipSpaces();
    if (current_ != end_ && *current_ == ']') {
      Token endArray;
      ReadToken(&endArray);
      return true;
    }
    for (Json::ArrayIndex index = 0;; ++index) {
      nodes_.push_back(&CurrentValue()[index]);
      bool ok = ReadValue();
      nodes_.pop_back();
      if (!ok) return false;
      Token token;
      ok = ReadToken(&token);
      while (token.type == kComment && ok) ok = ReadToken(&token);
      if (!ok || (token.type != kArraySeparator && token.type != kArrayEnd)) return false;
      if (token.type == kArrayEnd) return true;
    }
  }

  // Integers that fit are stored as integers: signed when negative or up to 2147483647,
  // unsigned above; anything else is decoded as a real.
  __attribute__((noinline)) bool DecodeNumber(const Token& token) {
    const char* current = token.start;
    const bool negative = *current == '-';
    if (negative) ++current;
    const Json::LargestUInt maxValue =
        negative ? Json::LargestUInt(Json::Value::maxLargestInt) + 1 : Json::Value::maxLargestUInt;
    const Json::LargestUInt threshold = maxValue / 10;
    Json::LargestUInt value = 0;
    while (current < token.end) {
      char c = *current++;
      if (c < '0' || c > '9') return DecodeDouble(token);
      auto digit = static_cast<Json::UInt>(c - '0');
      if (value >= threshold &&
          (value > threshold || current != token.end || digit > maxValue % 10)) {
        return DecodeDouble(token);
      }
      value = value * 10 + digit;
    }
    Json::Value decoded;
    if (negative && value == maxValue) {
      decoded = Json::Value::minLargestInt;
    } else if (negative) {
      decoded = -Json::LargestInt(value);
    } else if (value <= Json::LargestUInt(Json::Value::maxInt)) {
      decoded = Json::LargestInt(value);
    } else {
      decoded = value;
    }
    CurrentValue().swapPayload(decoded);
    return true;
  }

  __attribute__((noinline)) bool DecodeDouble(const Token& token) {
    double number = 0;
    std::istringstream stream(std::string(token.start, token.end));
    if (!(stream >> number)) return false;
    Json::Value decoded(number);
    CurrentValue().swapPayload(decoded);
    return true;
  }

  __attribute__((noinline)) bool DecodeString(const Token& token) {
    std::string text;
    if (!DecodeString(token, &text)) return false;
    Json::Value decoded(text);
    CurrentValue().swapPayload(decoded);
    return true;
  }

  static void AppendUtf8(unsigned codePoint, std::string* out) {
    if (codePoint <= 0x7F) {
      *out += static_cast<char>(codePoint);
    } else if (codePoint <= 0x7FF) {
      *out += static_cast<char>(0xC0 | (0x1F & (codePoint >> 6)));
      *out += static_cast<char>(0x80 | (0x3F & codePoint));
    } else if (codePoint <= 0xFFFF) {
      *out += static_cast<char>(0xE0 | (0xF & (codePoint >> 12)));
      *out += static_cast<char>(0x80 | (0x3F & (codePoint >> 6)));
      *out += static_cast<char>(0x80 | (0x3F & codePoint));
    } else if (codePoint <= 0x10FFFF) {
      *out += static_cast<char>(0xF0 | (0x7 & (codePoint >> 18)));
      *out += static_cast<char>(0x80 | (0x3F & (codePoint >> 12)));
      *out += static_cast<char>(0x80 | (0x3F & (codePoint >> 6)));
      *out += static_cast<char>(0x80 | (0x3F & codePoint));
    }
  }

  static bool DecodeHex4(const char*& current, const char* end, unsigned* out) {
    if (end - current < 4) return false;
    unsigned value = 0;
    for (int i = 0; i < 4; ++i) {
      char c = *current++;
      value *= 16;
      if (c >= '0' && c <= '9') {
        value += static_cast<unsigned>(c - '0');
      } else if (c >= 'a' && c <= 'f') {
        value += static_cast<unsigned>(c - 'a' + 10);
      } else if (c >= 'A' && c <= 'F') {
        value += static_cast<unsigned>(c - 'A' + 10);
      } else {
        return false;
      }
    }
    *out = value;
    return true;
  }

  // A high surrogate takes the next escape as its partner whatever that escape holds; a lone
  // low surrogate is kept as a three-byte sequence.
  static bool DecodeCodePoint(const char*& current, const char* end, unsigned* codePoint) {
    if (!DecodeHex4(current, end, codePoint)) return false;
    if (*codePoint >= 0xD800 && *codePoint <= 0xDBFF) {
      if (end - current < 6) return false;
      if (*current++ != '\\' || *current++ != 'u') return false;
      unsigned low = 0;
      if (!DecodeHex4(current, end, &low)) return false;
      *codePoint = 0x10000 + ((*codePoint & 0x3FF) << 10) + (low & 0x3FF);
    }
    return true;
  }

  static bool DecodeString(const Token& token, std::string* decoded) {
    decoded->reserve(static_cast<size_t>(token.end - token.start - 2));
    const char* current = token.start + 1;
    const char* end = token.end - 1;
    while (current != end) {
      char c = *current++;
      if (c == '"') break;
      if (c != '\\') {
        *decoded += c;
        continue;
      }
      if (current == end) return false;
      char escape = *current++;
      switch (escape) {
        case '"':
          *decoded += '"';
          break;
        case '/':
          *decoded += '/';
          break;
        case '\\':
          *decoded += '\\';
          break;
        case 'b':
          *decoded += '\b';
          break;
        case 'f':
          *decoded += '\f';
          break;
        case 'n':
          *decoded += '\n';
          break;
        case 'r':
          *decoded += '\r';
          break;
        case 't':
          *decoded += '\t';
          break;
        case 'u': {
          unsigned codePoint = 0;
          if (!DecodeCodePoint(current, end, &codePoint)) return false;
          AppendUtf8(codePoint, decoded);
          break;
        }
        default:
          return false;
      }
    }
    return true;
  }

  const char* const begin_;
  const char* const end_;
  const char* current_;
  const bool collectComments_;
  const char* lastValueEnd_ = nullptr;
  Json::Value* lastValue_ = nullptr;
  std::string commentsBefore_;
  std::vector<Json::Value*> nodes_;
};

}  // namespace

bool ParseJsonText(const std::string& text, Json::Value* root, bool collectComments) {
  Json::Value parsed;
  if (!ClassicReader(text, collectComments).Parse(&parsed)) {
    *root = Json::Value();
    return false;
  }
  root->swap(parsed);
  return true;
}

}  // namespace vsm
