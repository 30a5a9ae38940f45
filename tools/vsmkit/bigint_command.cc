// vsmkit bigint: one CBigInteger operation on hexadecimal numbers, or a batch of them read from
// standard input, one answer line per line.
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bigint/big_integer.h"
#include "kit_command.h"
#include "subcommands.h"

namespace vsmkit {

const char kBigintUsage[] =
    "vsmkit bigint OP ARG...         one operation on hexadecimal numbers, read as the text\n"
    "                                constructor reads them in radix 16; prints the result\n"
    "                                in hexadecimal, '-' in front of a negative one\n"
    "vsmkit bigint                   the same for each line \"OP ARG...\" of standard input,\n"
    "                                one answer line each (\"error: ...\" for a bad line)\n"
    "  OPs: add sub mul div mod gcd A B | modinv A MOD | cmp A B (-1, 0, 1)\n"
    "       modpow BASE EXP MOD | shl A BITS (decimal) | bits A | isprime A (1, 0)\n"
    "       frombytes HEX | bytes A | minimal A";
namespace {

using vsm::CBigInteger;

// As the text constructor reads it in radix 16: `-` in front, either case, stray characters
// skipped.
CBigInteger ReadNumber(const std::string& text) {
  std::vector<char> copy(text.begin(), text.end());
  copy.push_back('\0');
  return CBigInteger(copy.data(), 16);
}

std::string NumberText(const CBigInteger& value) {
  if (value.IsNegative()) return "-" + (-value).ToHexString();
  for (int32_t i = 0; i < value.length(); ++i) {
    if (value.data()[i] != 0) return value.ToHexString();
  }
  return "0";
}

std::string LowerHex(const uint8_t* bytes, int32_t count) {
  return ToLowerHex(bytes, count > 0 ? static_cast<size_t>(count) : 0);
}

// The answer to one operation, or UsageError.
std::string Answer(const Arguments& words) {
  if (words.empty()) throw UsageError("missing operation");
  const std::string& op = words[0];
  const Arguments args(words.begin() + 1, words.end());
  auto number = [&](size_t i) { return ReadNumber(args[i]); };
  if (op == "add" || op == "sub" || op == "mul" || op == "div" || op == "mod" || op == "gcd" ||
      op == "modinv" || op == "cmp") {
    ExpectCount(args, 2);
    const CBigInteger a = number(0);
    const CBigInteger b = number(1);
    if (op == "add") return NumberText(a + b);
    if (op == "sub") return NumberText(a - b);
    if (op == "mul") return NumberText(a * b);
    if (op == "div") return NumberText(a / b);
    if (op == "mod") return NumberText(a % b);
    if (op == "gcd") return NumberText(CBigInteger::Gcd(a, b));
    if (op == "modinv") return NumberText(CBigInteger::ModInverse(a, b));
    return a < b ? "-1" : a > b ? "1" : "0";
  }
  if (op == "modpow") {
    ExpectCount(args, 3);
    return NumberText(number(0).ModPow(number(1), number(2)));
  }
  if (op == "shl") {
    ExpectCount(args, 2);
    return NumberText(
        number(0) << static_cast<int32_t>(ParseDecimal(args[1], "BITS", INT32_MIN, INT32_MAX)));
  }
  if (op == "bits" || op == "isprime" || op == "bytes" || op == "minimal") {
    ExpectCount(args, 1);
    CBigInteger a = number(0);
    if (op == "bits") return std::to_string(a.BitCount());
    if (op == "isprime") return std::to_string(a.IsProbablePrime());
    if (op == "bytes") {
      const std::unique_ptr<uint8_t[]> bytes(a.GetBytes());
      return LowerHex(bytes.get(), a.length() * 4);
    }
    std::vector<uint8_t> buffer(static_cast<size_t>(a.length()) * 4);
    const int32_t written = a.ExportMinimal(buffer.data(), static_cast<int32_t>(buffer.size()));
    return LowerHex(buffer.data(), written);
  }
  if (op == "frombytes") {
    ExpectCount(args, 1);
    const std::vector<uint8_t> bytes = ParseHexBytes(args[0], "HEX");
    return NumberText(CBigInteger(bytes.data(), static_cast<int32_t>(bytes.size())));
  }
  throw UsageError("unknown operation: " + op);
}

// Lines "OP ARG..." to answer lines; a line that can't be read answers "error: MESSAGE" and the
// batch goes on. Exit 2 when any line failed.
int RunBatch() {
  std::string line;
  bool failed = false;
  while (std::getline(std::cin, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream fields(line);
    Arguments words;
    for (std::string word; fields >> word;) words.push_back(word);
    std::string answer;
    try {
      answer = Answer(words);
    } catch (const UsageError& error) {
      answer = std::string("error: ") + error.what();
      failed = true;
    }
    answer += '\n';
    WriteStandardOutput(answer.data(), answer.size());
  }
  return failed ? 2 : 0;
}

}  // namespace

int RunBigint(const Arguments& arguments) {
  if (arguments.empty()) return RunBatch();
  const std::string answer = Answer(arguments) + "\n";
  WriteStandardOutput(answer.data(), answer.size());
  return 0;
}

}  // namespace vsmkit
