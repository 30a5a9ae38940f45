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

// A string value's bytes as the C string they once were.
std::string CStringOf(const Json::Value& value) {
  const char* begin = nullptr;
  const char* end = nullptr;
  if (!value.getString(&begin, &end) || begin == nullptr) return std::string();
  const void* nul = std::memchr(begin, '\0', static_cast<size_t>(end - begin));
  return std::string(begin, nul ? static_cast<const char*>(nul) : end);
}

const Json::Value& NullValue() {
  static const Json::Value null;
  return null;
}

// The elements of an array in index order. Indices that the array skips read as null, as they
// do through the array's operator[]; gathering them in one walk spares a map search for each.
using Elements = std::vector<const Json::Value*>;

Elements ElementsOf(const Json::Value& array) {
  Elements elements(array.size(), &NullValue());
  for (auto it = array.begin(); it != array.end(); ++it) elements[it.index()] = &*it;
  return elements;
}

class Writer {
 public:
  // The value at `standIn` (null for none) is written as an array of `standInElements`.
  Writer(const Json::Value* standIn, const std::vector<Json::Value*>* standInElements)
      : standIn_(standIn), standInElements_(standInElements) {}

  std::string Write(const Json::Value& root) {
    WriteCommentBeforeValue(root);
    WriteValue(root);
    WriteCommentAfterValueOnSameLine(root);
    document_ += '\n';
    return std::move(document_);
  }

 private:
  void WriteValue(const Json::Value& value) {
    if (&value == standIn_) {
      Elements elements;
      elements.reserve(standInElements_->size());
      for (const Json::Value* element : *standInElements_) {
        elements.push_back(element != nullptr ? element : &NullValue());
      }
      WriteArray(elements);
      return;
    }
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
        WriteArray(ElementsOf(value));
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

  void WriteArray(const Elements& elements) {
    const size_t size = elements.size();
    if (size == 0) {
      PushValue("[]");
      return;
    }
    if (!IsMultilineArray(elements)) {
      document_ += "[ ";
      for (size_t index = 0; index < size; ++index) {
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
    for (size_t index = 0;;) {
      const Json::Value& child = *elements[index];
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

  bool IsNonEmptyContainer(const Json::Value& value) const {
    if (&value == standIn_) return !standInElements_->empty();
    return (value.type() == Json::arrayValue || value.type() == Json::objectValue) &&
           value.size() > 0;
  }

  bool IsMultilineArray(const Elements& elements) {
    const size_t size = elements.size();
    bool multiline = size * 3 >= kRightMargin;
    childValues_.clear();
    for (size_t index = 0; index < size && !multiline; ++index) {
      multiline = IsNonEmptyContainer(*elements[index]);
    }
    if (!multiline) {
      childValues_.reserve(size);
      addChildValues_ = true;
      size_t lineLength = 4 + (size - 1) * 2;  // "[ " + ", " between elements + " ]"
      for (size_t index = 0; index < size; ++index) {
        if (HasComment(*elements[index])) multiline = true;
        WriteValue(*elements[index]);
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

  const Json::Value* const standIn_;
  const std::vector<Json::Value*>* const standInElements_;
  std::string document_;
  // The document's length just behind the last line comment written on a value's line.
  size_t lineCommentEnd_ = std::string::npos;
  std::string indentString_;
  std::vector<std::string> childValues_;
  bool addChildValues_ = false;
};

bool IsControlCharacter(char c) { return c > 0 && c <= 0x1F; }

}  // namespace

std::string StyledWrite(const Json::Value& root) { return Writer(nullptr, nullptr).Write(root); }

std::string StyledWriteWithArray(const Json::Value& root, const Json::Value* standIn,
                                 const std::vector<Json::Value*>& elements) {
  return Writer(standIn, &elements).Write(root);
}

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
