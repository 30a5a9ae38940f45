// vsmkit zlib: CZlibWrapper from standard input to standard output.
#include <cstdlib>
#include <memory>

#include "kit_command.h"
#include "subcommands.h"
#include "support/zlib_wrapper.h"

namespace vsmkit {

const char kZlibUsage[] =
    "vsmkit zlib compress [LEVEL]    deflate standard input (LEVEL -1..9, default -1)\n"
    "vsmkit zlib expand CAPACITY     inflate standard input into at most CAPACITY bytes";

int RunZlib(const Arguments& arguments) {
  ExpectCount(arguments, 1, 2);
  const std::string& mode = arguments[0];
  vsm::CZlibWrapper wrapper;
  uint64_t size = 0;
  uint8_t* result = nullptr;
  if (mode == "compress") {
    const int64_t level =
        arguments.size() > 1 ? ParseDecimal(arguments[1], "LEVEL", INT32_MIN, INT32_MAX) : -1;
    const std::vector<uint8_t> input = ReadStandardInput();
    result = wrapper.Compress(input.data(), input.size(), static_cast<int>(level), &size);
    if (result == nullptr) throw OperationFailed("the input could not be compressed");
  } else if (mode == "expand") {
    ExpectCount(arguments, 2);
    const int64_t capacity = ParseDecimal(arguments[1], "CAPACITY", 0, INT64_MAX);
    const std::vector<uint8_t> input = ReadStandardInput();
    result = wrapper.Uncompress(input.data(), static_cast<int64_t>(input.size()),
                                static_cast<uint64_t>(capacity), &size);
    if (result == nullptr) {
      throw OperationFailed("the input is no complete zlib stream within the capacity");
    }
  } else {
    throw UsageError("unknown mode: " + mode);
  }
  const std::unique_ptr<uint8_t, decltype(&std::free)> owned(result, &std::free);
  WriteStandardOutput(owned.get(), size);
  return 0;
}

}  // namespace vsmkit
