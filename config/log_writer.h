// The module's log: one text file, one formatted line per message, behind a level mask.
//
// Levels are bits: 2 Error, 4 Info, 8 Debug (1 "NULL" is the default mask and matches no writer
// operation, so a fresh installation logs nothing; 16 "Verbose" has no writer here). The mask is
// LogLevel of the configuration file, read at each call, unless logging was switched to 14 at
// start-up or by SetLogLevel (`verboseLogging`), in which case it is 14 without a read.
// Each line is "[Process:%6d Thread:%6d] [MM/DD/YYYY hh:mm:ss.mmm] [Level-workMode]: text",
// with " GetLastError = %d." (the errno found on entry) behind Error lines, appended to the service
// log (or the updater log while `isScanning` is set) by opening, writing and closing the file under
// configLock, so lines never interleave and a removed file comes back.
// Every function is thread-safe and lets no exception out; a file that can't be opened makes
// the writer return 0 and the caller goes on. A symlink, a pipe or a file with a second name in
// the log file's place counts as one that can't be opened: the log folder is open to all users.
#ifndef VSM_CONFIG_LOG_WRITER_H_
#define VSM_CONFIG_LOG_WRITER_H_

#include <cstdarg>
#include <cstdint>
#include <string>

namespace vsm {

constexpr uint32_t kLogNull = 1;
constexpr uint32_t kLogError = 2;
constexpr uint32_t kLogInfo = 4;
constexpr uint32_t kLogDebug = 8;
constexpr uint32_t kLogVerbose = 16;

// printf-style. They test the mask before touching their arguments, so with logging off a call
// costs the mask test alone. Result as LogMessage.
int LogError(const char* format, ...) __attribute__((format(printf, 1, 2)));
int LogInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
int LogDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));

// 1 when the mask leaves `level` out; 0 for a null format; else the result of WriteLogLine
// (1 on a swallowed exception).
int LogMessage(uint32_t level, const char* format, va_list arguments);
// Writes one line, and `dataLength` raw bytes and a line feed behind it when `data` is not null.
// 1 written (or left out by the mask), 0 when the file can't be opened.
int WriteLogLine(uint32_t level, const char* text, const void* data, uint32_t dataLength);
int LogDebugData(const char* text, const void* data, uint32_t dataLength);

// 14 while `verboseLogging` is set; else LogLevel from the configuration file (1 by default).
uint32_t GetLogMask();
bool IsDebugLogOn();
// Writes LogLevel and sets `verboseLogging` to whether `level` is 14.
void SetLogLevel(uint32_t level);
void SetVerboseLogging(bool verbose);
bool IsVerboseLogging();
void SetScanning(bool scanning);
bool IsScanning();

// The name of a level: "NULL", "Error", "Info", "Debug", "Verbose" by its lowest set bit, ""
// when none of the five bits is set.
const char* LogLevelName(uint32_t level);

// `directory` + `fileName` when that file can be opened for appending (as the writer opens it);
// otherwise the same with "(<rand()>)" before the extension, so a process that can't open the
// log writes beside it.
std::string ChooseLogPath(const std::string& directory, const std::string& fileName);

}  // namespace vsm

#endif  // VSM_CONFIG_LOG_WRITER_H_
