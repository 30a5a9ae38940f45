// Log lines in tests: a head holds the process and thread numbers and the clock, which differ at
// each run, so tests match heads by pattern and compare the rest byte for byte. (Not std::regex:
// its headers trip -Wmaybe-uninitialized in the sanitizer builds.)
#ifndef VSM_TESTS_TEST_SUPPORT_LOG_LINE_H_
#define VSM_TESTS_TEST_SUPPORT_LOG_LINE_H_

#include <cctype>
#include <string>

namespace vsm::testing {

// The length `pattern` matches in `text` at `pos`, or 0. In a pattern 'N' is a "%6d" number
// (blanks and at least one digit, six characters or more), '*' one or more digits, '9' one digit.
inline size_t MatchPattern(const std::string& text, size_t pos, const char* pattern) {
  const size_t start = pos;
  auto digit = [&] { return pos < text.size() && isdigit(static_cast<unsigned char>(text[pos])); };
  for (const char* p = pattern; *p != '\0'; ++p) {
    const size_t from = pos;
    while (*p == 'N' && pos < text.size() && text[pos] == ' ') ++pos;
    const size_t digits = pos;
    while ((*p == 'N' || *p == '*' || (*p == '9' && pos == digits)) && digit()) ++pos;
    const bool ok = *p == 'N'                ? pos > digits && pos - from >= 6
                    : *p == '*' || *p == '9' ? pos > digits
                                             : pos < text.size() && text[pos++] == *p;
    if (!ok) return 0;
  }
  return pos - start;
}

inline bool Matches(const std::string& text, const char* pattern) {
  return !text.empty() && MatchPattern(text, 0, pattern) == text.size();
}

constexpr char kLineHead[] = "[Process:N Thread:N] [99/99/9999 99:99:99.999] ";

// `log` with every line head replaced by "H ".
inline std::string WithoutHeads(const std::string& log) {
  std::string result;
  for (size_t pos = 0, length; pos < log.size(); pos += length ? length : 1) {
    length = MatchPattern(log, pos, kLineHead);
    result += length ? std::string("H ") : std::string(1, log[pos]);
  }
  return result;
}

}  // namespace vsm::testing

#endif  // VSM_TESTS_TEST_SUPPORT_LOG_LINE_H_
