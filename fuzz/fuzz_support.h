// Small pieces the fuzz targets share: a scratch folder for targets that touch files, the
// splitting of one input into several texts, and the report of a broken property.
//
// A target reports a broken property through FuzzCheck, which prints what broke and aborts, so
// that libFuzzer records the input as a finding just as it does for a sanitizer report.
#ifndef VSM_FUZZ_FUZZ_SUPPORT_H_
#define VSM_FUZZ_FUZZ_SUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vsm::fuzz {

// A fresh folder under /dev/shm (else $TMPDIR, else /tmp), made at the first call and removed with
// everything in it when the process ends normally. The path has no trailing slash.
const std::string& ScratchFolder();

// Removes everything inside `folder`, keeping the folder itself.
void EmptyFolder(const std::string& folder);

// The input cut at its NUL bytes into fields, at most `count` of them: the last field then
// keeps the rest, NULs included. An empty input gives one empty field.
std::vector<std::string> SplitFields(const uint8_t* data, size_t size, size_t count);

// Aborts with `what` and `detail` on standard error when `holds` is false.
void FuzzCheck(bool holds, const char* what, const std::string& detail = std::string());

}  // namespace vsm::fuzz

#endif  // VSM_FUZZ_FUZZ_SUPPORT_H_
