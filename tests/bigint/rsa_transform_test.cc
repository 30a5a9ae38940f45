// The two RSA forms: their three deliberate disagreements, the size query and the bytes they
// leave alone. bigint_oracle.py compares both forms with Python's pow over random keys and data.
#include "bigint/rsa_transform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "big_number_text.h"

namespace vsm {
namespace {

std::vector<uint8_t> Bytes(const std::string& hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

using Transform = uint32_t (*)(const uint8_t*, int32_t, const uint8_t*, int32_t, const uint8_t*,
                               int32_t, uint8_t*);

// "size result hex-of-output": the size asked with a null output, then the call into a buffer
// of that size, filled with 0xEE beforehand so that untouched bytes show.
std::string Transformed(Transform transform, const std::string& e, const std::string& n,
                        const std::string& data) {
  const std::vector<uint8_t> eb = Bytes(e), nb = Bytes(n), db = Bytes(data);
  const auto call = [&](uint8_t* output) {
    return transform(eb.data(), static_cast<int32_t>(eb.size()), nb.data(),
                     static_cast<int32_t>(nb.size()), db.data(), static_cast<int32_t>(db.size()),
                     output);
  };
  const uint32_t size = call(nullptr);
  std::vector<uint8_t> output(size, 0xEE);
  const uint32_t result = call(output.data());
  return std::to_string(size) + " " + std::to_string(result) + " " +
         Hex(output.data(), static_cast<int32_t>(output.size()));
}

TEST(RsaTransformTest, TheTwoFormsDisagreeWhereTheyAlwaysHave) {
  const struct {
    const char* name;
    Transform transform;
    const char *e, *n, *data, *expected;
  } cases[] = {
      // The block is min(exponent, data) bytes for the fixed form, min(data, modulus) for the
      // minimal one; the fixed form keeps leading zeros and puts the rest behind the words.
      {"minimal, exponent 01", RsaTransformMinimal, "01", "7fffffff", "00001234", "4 4 12340000"},
      {"fixed, exponent of 4 bytes", RsaTransformFixed, "00000001", "7fffffff", "00001234",
       "4 4 00001234"},
      {"fixed, exponent 01: a 1-byte block", RsaTransformFixed, "01", "7fffffff", "00001234",
       "7 4 00000000001234"},
      {"minimal with a rest", RsaTransformMinimal, "01", "7fffffff", "00001234abcd",
       "6 4 1234abcdeeee"},  // the rest behind the value's own bytes, the tail untouched
      {"fixed with a rest", RsaTransformFixed, "00000001", "7fffffff", "00001234abcd",
       "6 4 00001234abcd"},
      {"minimal, result 0", RsaTransformMinimal, "03", "07", "07ff", "5 4 ff000000ee"},
      {"fixed, zero modulus", RsaTransformFixed, "03", "00", "05", "4 4 00000000"},
      {"fixed, exponent 00", RsaTransformFixed, "00", "07", "05", "4 4 00000001"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Transformed(c.transform, c.e, c.n, c.data), c.expected) << c.name;
  }
  const uint8_t e[] = {3}, n[] = {7}, data[] = {2, 9};              // negative sizes count as 0
  EXPECT_EQ(RsaTransformFixed(e, -1, n, 1, data, 2, nullptr), 6u);  // empty block, all the rest
  EXPECT_EQ(RsaTransformMinimal(e, 1, n, -1, data, 2, nullptr), 6u);
}

}  // namespace
}  // namespace vsm
