// The JSON reader and the styled writer, and the typed readings of a parsed value.
//
// Input: one byte of flags (bit 0: keep comments, as results parsed for AddJsonResult do), then
// the text. Any text parses or is refused, with a null root when refused. What the writer makes
// of a parsed value must parse again and write the same bytes. Every reading a handler may apply
// to a parameter runs on the root and on each member of it.
#include <json/value.h>

#include <cstdint>
#include <memory>
#include <string>

#include "fuzz_support.h"
#include "protocol/json_reader.h"
#include "protocol/parameter_conversions.h"
#include "protocol/styled_writer.h"

namespace {

using vsm::fuzz::FuzzCheck;

void ReadEveryWay(const Json::Value& value) {
  std::string text;
  vsm::ValueText(&value, &text);
  vsm::ValueCString(&value, &text);
  vsm::ValueInt64(&value);
  vsm::ValueShort(&value);
  vsm::ValueInt(&value);
  vsm::ValueUInt(&value);
  vsm::ValueDouble(&value);
  vsm::ValueFloat(&value);
  vsm::ValueBool(&value);
  uint16_t shortValue;
  int32_t intValue;
  uint32_t uintValue;
  double doubleValue;
  float floatValue;
  bool boolValue;
  char charValue;
  vsm::ReadShort(&value, &shortValue);
  vsm::ReadInt(&value, &intValue);
  vsm::ReadUInt(&value, &uintValue);
  vsm::ReadDouble(&value, &doubleValue);
  vsm::ReadFloat(&value, &floatValue);
  vsm::ReadBool(&value, &boolValue);
  vsm::ReadChar(&value, &charValue);
  int32_t* array = nullptr;
  int32_t count = 0;
  vsm::ReadIntArray(&value, &array, &count);
  delete[] array;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const bool collectComments = (data[0] & 1) != 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

  Json::Value root;
  if (!vsm::ParseJsonText(text, &root, collectComments)) {
    FuzzCheck(root.isNull(), "a refused text leaves a null root", text);
    return 0;
  }
  const std::string written = vsm::StyledWrite(root);
  Json::Value again;
  FuzzCheck(vsm::ParseJsonText(written, &again, collectComments), "written text parses again",
            written);
  // Comments are written back as they were read, and the classic grammar takes some texts as
  // comments ("/* a/" among them) that no longer read as comments with a line feed behind them;
  // so only values without comments must come out byte for byte the same.
  if (!collectComments) {
    const std::string rewritten = vsm::StyledWrite(again);
    FuzzCheck(rewritten == written, "written text writes the same bytes again",
              written + "\n---\n" + rewritten);
  }

  ReadEveryWay(root);
  if (root.isArray() || root.isObject()) {
    for (const Json::Value& member : root) ReadEveryWay(member);
  }
  return 0;
}
