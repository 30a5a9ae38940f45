// Small helpers of a scanning process on Linux: the remembered scan source, the names of the
// process's temporary image files, and the PNM to BMP conversion by the helper program
// "pnm2bmp" that lies in the root directory.
//
// The source chosen for scanner `n` is the key "CurrentSource<n>" of section "VS" of the
// configuration file, with <n> formatted by "%d" (so numbers above 2^31 - 1 give negative
// texts, as stored files already hold them). The temporary files are
// "<root>linuxQPT<pid>.pnm" and ".bmp", with the calling process's number.
//
// Thread-safe; no state of its own (configuration access takes the configuration lock).
//
// No export of the module reaches this code.
#ifndef VSM_HOST_SCAN_FILES_H_
#define VSM_HOST_SCAN_FILES_H_

#include <cstdint>
#include <string>

namespace vsm {

// The remembered source of scanner `n`, or an empty string.
std::string ReadCurrentSource(uint32_t n);
// Remembers `name` (null: empty) as the source of scanner `n`.
void WriteCurrentSource(uint32_t n, const char* name);

// "<root>linuxQPT<pid>.pnm" and "<root>linuxQPT<pid>.bmp" in blocks from malloc that the
// caller frees with free(). Null only when the allocation fails.
char* MakeScanPnmPath();
char* MakeScanBmpPath();

// Runs GetPnmToBmpCommand through the shell and ignores the result: a caller sees a failure only
// as a missing or empty output file.
void ConvertPnmToBmp(const char* inputPath, const char* outputPath);
// "<root>pnm2bmp <input> > <output>", the paths not quoted; a null path counts as empty.
std::string GetPnmToBmpCommand(const char* inputPath, const char* outputPath);

}  // namespace vsm

#endif  // VSM_HOST_SCAN_FILES_H_
