// What every vsmkit subcommand shares: its signature, the two ways it fails, and the small
// readers and writers of its arguments and streams.
//
// A subcommand gets the words after its own name. It throws UsageError for arguments it cannot
// read (vsmkit prints the message and the subcommand's usage, exit 2) and OperationFailed when
// the kit refuses the operation (message on standard error, exit 1). Anything it prints on
// standard output is the result, byte for byte.
#ifndef VSM_TOOLS_VSMKIT_KIT_COMMAND_H_
#define VSM_TOOLS_VSMKIT_KIT_COMMAND_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace vsmkit {

using Arguments = std::vector<std::string>;

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct OperationFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// One subcommand: its name, its usage lines (each starting with "vsmkit NAME"), and its body.
struct Subcommand {
  const char* name;
  const char* usage;
  int (*run)(const Arguments& arguments);
};

// Throws UsageError unless there are `count` arguments (or between `least` and `most`).
void ExpectCount(const Arguments& arguments, size_t count);
void ExpectCount(const Arguments& arguments, size_t least, size_t most);

// A whole decimal number in [low, high], or UsageError naming `what`.
int64_t ParseDecimal(const std::string& text, const char* what, int64_t low, int64_t high);
// A decimal real (strtod's grammar, the whole text), or UsageError.
double ParseReal(const std::string& text, const char* what);
// Hex digits, two per byte, either case; an odd count or another character is a UsageError.
std::vector<uint8_t> ParseHexBytes(const std::string& text, const char* what);
// Exactly eight hex digits as a 32-bit number, or UsageError.
uint32_t ParseHexWord(const std::string& text, const char* what);

// Lower-case hex, two digits per byte.
std::string ToLowerHex(const uint8_t* bytes, size_t length);
// Eight lower-case hex digits.
std::string HexWord(uint32_t value);

// All of standard input, as bytes. OperationFailed on a read error.
std::vector<uint8_t> ReadStandardInput();
// Writes the bytes to standard output whole. OperationFailed on a write error.
void WriteStandardOutput(const void* bytes, size_t length);
// A whole file, or OperationFailed naming it.
std::vector<uint8_t> ReadWholeFile(const std::string& path);
// Writes a file whole, or OperationFailed naming it.
void WriteWholeFile(const std::string& path, const std::vector<uint8_t>& bytes);

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_KIT_COMMAND_H_
