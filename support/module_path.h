// Paths: where the program lies, splitting and trimming paths, making parent folders.
//
// Paths are 8-bit strings with '/' as separator. The helpers that write a path work in caller
// buffers of kPathBufferSize (1024) bytes, which the caller has zeroed; every output is
// NUL-terminated and cut to fit, never written past 1024 bytes. Null arguments do nothing.
// No state; thread-safe.
#ifndef VSM_SUPPORT_MODULE_PATH_H_
#define VSM_SUPPORT_MODULE_PATH_H_

#include <cstddef>

namespace vsm {

constexpr size_t kPathBufferSize = 1024;

// The program file of this process (/proc/self/exe) into `output`; empty when the kernel won't
// say. A path longer than 1023 bytes is cut.
void GetModulePath(char* output);
// The folder of the program file with exactly one '/' at the end, cut after the last '/' or
// '\'. Empty when the path has no separator. Zeroes all 1024 bytes of `output` first.
void GetModuleDirectory(char* output);
// Splits at the last '/': the folder part without that '/' into `folderOut`, the rest into
// `fileOut`. Without a '/', `folderOut` takes the whole path and `fileOut` is empty.
void SplitPath(const char* path, char* folderOut, char* fileOut);
// In place: removes all trailing blanks, then all trailing '\', then all trailing '/', each
// step once and in that order ("a/ \" keeps its '/').
void TrimPathEnd(char* path);
// Makes every missing folder above `path`, not the last component itself. 1 when they exist
// afterwards (also for a name without '/'), 0 when one couldn't be made or for null. A
// component that exists as a file is passed over; the first folder below it then fails.
int EnsureParentDirectories(const char* path, void* ignored);
// "<shared data folder>/Veldorane/". Linux names no shared data folder, so this is
// "/Veldorane/". Nothing in the module calls it; it stands for hosts that want the folder.
void GetSharedDataDirectory(char* output);

}  // namespace vsm

#endif  // VSM_SUPPORT_MODULE_PATH_H_
