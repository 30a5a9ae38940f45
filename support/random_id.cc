#include "support/random_id.h"

#include <cstdio>
#include <cstring>
#include <random>

#include "support/c_string.h"

namespace vsm {

namespace {

constexpr size_t kIdBufferSize = 1024;

int RandomByte() {
  std::random_device device("default");
  std::mt19937 generator(device());
  std::uniform_int_distribution<int> distribution(0, 255);
  return distribution(generator);
}

}  // namespace

std::string GenerateRandomHexString(int32_t count) {
  std::string result;
  for (int32_t i = 0; i < count; ++i) {
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%x", RandomByte());
    if (digits[1] == '\0') result += '0';
    result += digits;
  }
  return result;
}

void GetRandomId(char* output) {
  if (output == nullptr) return;
  std::memset(output, 0, kIdBufferSize);
  std::string id = GenerateRandomHexString(16);
  SafeStringCopy(output, id.c_str(), kIdBufferSize);
}

}  // namespace vsm
