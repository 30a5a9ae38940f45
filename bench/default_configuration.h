// The configuration file of an installed service, shared by the command benchmarks: 20 keys
// with the default LogLevel, so logging is off but each log call reads the file to learn that.
#ifndef VSM_BENCH_DEFAULT_CONFIGURATION_H_
#define VSM_BENCH_DEFAULT_CONFIGURATION_H_

#include <cstdio>
#include <string>

namespace vsm::bench {

inline void WriteDefaultConfiguration(const std::string& path) {
  std::string file = "[VS]\nLogLevel=1\nServer=127.0.0.1\n";
  for (int i = 0; i < 18; ++i) file += "Key" + std::to_string(i) + "=TRUE\n";
  std::FILE* out = std::fopen(path.c_str(), "wb");
  std::fputs(file.c_str(), out);
  std::fclose(out);
}

}  // namespace vsm::bench

#endif  // VSM_BENCH_DEFAULT_CONFIGURATION_H_
