#include "protocol/styled_writer.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace vsm {

namespace {

constexpr unsigned kRightMargin = 74;
constexpr unsigned kIndentSize = 3;

bool HasComment(const Json::Value& value) {
  return value.hasComment(Json::commentBefore) || value.hasComment(Json::commentAfterOnSameLine) ||
         value.hasComment(Json::commentAfter);
}

bool IsNonEmptyContainer(const Json::Value& value) {
  return (value.type() == Json::arrayValue || value.type() == Json::objectValue) &&
         value.size() > 0;
}

// A string value's bytes as the C string they once were.
std::string CStringOf(const Json::Value& value) {
  const char* begin = nullptr;
  const char* end = nullptr;
  if (!value.getString(&begin, &end) || begin == nullptr) return std::string();
  const void* nul = std::memchr(begin, '\0', static_cast<size_t>(end - begin));
  return std::string(begin, nul ? static_cast<const char*>(nul) : end);
}

class Writer {
 public:
  std::string Write(const Json::Value& root) {
    WriteCommentBeforeValue(root);
    WriteValue(root);
    WriteCommentAfterValueOnSameLine(root);
    document_ += '\n';
    return std::move(document_);
  }

 private:
  void WriteValue(const Json::Value& value) {
    switch (value.type()) {
      case Json::nullValue:
        PushValue("null");
        break;
      case Json::intValue:
        PushValue(std::to_string(value.asLargestInt()));
        break;
      case Json::uintValue:
        PushValue(std::to_string(value.asLargestUInt()));
        break;
      case Json::realValue:
        PushValue(FormatReal(value.asDouble()));
        break;
      case Json::stringValue:
        PushValue(QuoteCString(CStringOf(value).c_str()));
        break;
      case Json::booleanValue:
        PushValue(value.asBool() ? "true" : "false");
        break;
      case Json::arrayValue:
        WriteArrayValue(value);
        break;
      case Json::objectValue:
        WriteObjectValue(value);
        break;
    }
  }

  void WriteObjectValue(const Json::Value& value) {
    if (value.empty()) {
      PushValue("{}");
      return;
    }
    WriteWithIndent("{");
    Indent();
    for (auto it = value.begin(); it != value.end();) {
      const Json::Value& child = *it;
      WriteCommentBeforeValue(child);
      WriteWithIndent(QuoteCString(it.name().c_str()));
      document_ += " : ";
      WriteValue(child);
      if (++it == value.end()) {
        WriteCommentAfterValueOnSameLine(child);
        break;
      }
      document_ += ',';
      WriteCommentAfterValueOnSameLine(child);
    }
    Unindent();
    WriteWithIndent("}");
  }

  void WriteArrayValue(const Json::Value& value) {
    const Json::ArrayIndex size = value.size();
    if (size == 0) {
      PushValue("[]");
      return;
    }
    if (!IsMultilineArray(value)) {
      document_ += "[ ";
      for (Json::ArrayIndex index = 0; index < size; ++index) {
        if (index > 0) document_ += ", ";
        document_ += childValues_[index];
      }
      document_ += " ]";
      return;
    }
    WriteWithIndent("[");
    Indent();
    // When the array spreads only because its line is too long, its elements are already
    // formatted; otherwise they are written in place, since they contain containers.
    const bool hasChildValues = !childValues_.empty();
    std::vector<std::string> formatted;
    formatted.swap(childValues_);
    for (Json::ArrayIndex index = 0;;) {
      const Json::Value& child = value[index];
      WriteCommentBeforeValue(child);
      if (hasChildValues) {
        WriteWithIndent(formatted[index]);
      } else {
        WriteIndent();
        WriteValue(child);
      }
      if (++index == size) {
        WriteCommentAfterValueOnSameLine(child);
        break;
      }
      document_ += ',';
      WriteCommentAfterValueOnSameLine(child);
    }
    Unindent();
    WriteWithIndent("]");
  }

  bool IsMultilineArray(const Json::Value& value) {
    const Json::ArrayIndex size = value.size();
    bool multiline = size * 3 >= kRightMargin;
    childValues_.clear();
    for (Json::ArrayIndex index = 0; index < size && !multiline; ++index) {
      multiline = IsNonEmptyContainer(value[index]);
    }
    if (!multiline) {
      childValues_.reserve(size);
      addChildValues_ = true;
      size_t lineLength = 4 + (size - 1) * 2;  // "[ " + ", " between elements + " ]"
      for (Json::ArrayIndex index = 0; index < size; ++index) {
        if (HasComment(value[index])) multiline = true;
        WriteValue(value[index]);
        lineLength += childValues_[index].length();
      }
      addChildValues_ = false;
      multiline = multiline || lineLength >= kRightMargin;
    }
    return multiline;
  }

  void PushValue(const std::string& text) {
    if (addChildValues_) {
      childValues_.push_back(text);
    } else {
      document_ += text;
    }
  }

  void WriteIndent() {
    if (!document_.empty()) {
      char last = document_.back();
      // Behind " : " or an opening indent the line is already indented. A line comment that
      // ends the document, though, runs to the end of its line whatever its last character:
      // what follows must start a new line, or it would read as part of the comment.
      const bool afterLineComment = document_.size() == lineCommentEnd_;
      if (last == ' ' && !afterLineComment) return;
      if (last != '\n') document_ += '\n';
    }
    document_ += indentString_;
  }

  void WriteWithIndent(const std::string& text) {
    WriteIndent();
    document_ += text;
  }

  void Indent() { indentString_.append(kIndentSize, ' '); }
  void Unindent() { indentString_.resize(indentString_.size() - kIndentSize); }

  void WriteCommentBeforeValue(const Json::Value& value) {
    if (!value.hasComment(Json::commentBefore)) return;
    document_ += '\n';
    WriteIndent();
    const std::string comment = value.getComment(Json::commentBefore);
    for (size_t i = 0; i < comment.size(); ++i) {
      document_ += comment[i];
      if (comment[i] == '\n' && i + 1 < comment.size() && comment[i + 1] == '/') WriteIndent();
    }
    document_ += '\n';  // comments are kept without their last line feed
  }

  void WriteCommentAfterValueOnSameLine(const Json::Value& value) {
    if (value.hasComment(Json::commentAfterOnSameLine)) {
      document_ += ' ';
      const std::string comment = value.getComment(Json::commentAfterOnSameLine);
      document_ += comment;
      if (comment.compare(0, 2, "//") == 0) lineCommentEnd_ = document_.size();
    }
    if (value.hasComment(Json::commentAfter)) {
      document_ += '\n';
      document_ += value.getComment(Json::commentAfter);
      document_ += '\n';
    }
  }

  std::string document_;
  // The document's length just behind the last line comment written on a value's line.
  size_t lineCommentEnd_ = std::string::npos;
  std::string indentString_;
  std::vector<std::string> childValues_;
  bool addChildValues_ = false;
};

bool IsControlCharacter(char c) { return c > 0 && c <= 0x1F; }

}  // namespace

std::string StyledWrite(const Json::Value& root) { return Writer().Write(root); }

std::string FormatReal(double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof(buffer), "%#.16g", value);
  size_t length = std::strlen(buffer);
  if (length == 0 || buffer[length - 1] != '0') return buffer;
  // Trailing zeros of the fraction go, all but one; an exponent or anything else that is not a
  // digit between the last non-zero character and the point leaves the text as it is.
  long lastNonZero = static_cast<long>(length) - 1;
  while (lastNonZero > 0 && buffer[lastNonZero] == '0') --lastNonZero;
  for (long i = lastNonZero; i >= 0; --i) {
    char c = buffer[i];
    if (c >= '0' && c <= '9') continue;
    if (c == '.') buffer[lastNonZero + 2] = '\0';
    return buffer;
  }
  return buffer;
}

std::string QuoteCString(const char* text) {
  std::string result = "\"";
  for (const char* c = text; *c != '\0'; ++c) {
    switch (*c) {
      case '"':
        result += "\\\"";
        break;
      case '\\':
        result += "\\\\";
        break;
      case '\b':
        result += "\\b";
        break;
      case '\f':
        result += "\\f";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\t':
        result += "\\t";
        break;
      default:
        if (IsControlCharacter(*c)) {
          char escape[8];
          std::snprintf(escape, sizeof(escape), "\\u%04X", static_cast<unsigned>(*c));
          result += escape;
        } else {
          result += *c;
        }
        break;
    }
  }
  result += '"';
  return result;
}

}  // namespace vsm
