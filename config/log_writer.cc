#include "config/log_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "config/config_store.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "support/clock.h"
#include "support/ini_key_reader.h"

namespace vsm {

namespace {

// The one normal setting for logging: Error, Info and Debug together.
constexpr uint32_t kVerboseMask = kLogError | kLogInfo | kLogDebug;
constexpr size_t kLineHeadSize = 512;
// The text buffer is its measured length plus this much, as it has always been allocated.
constexpr size_t kTextSlack = 513;
// How much of LogLevel counts: as many characters as a profile read into 64 bytes keeps.
constexpr size_t kMaskTextLimit = 62;

std::atomic<bool> verboseLogging{false};
std::atomic<bool> isScanning{false};

int ProcessNumber() {
  // Fetched once per process: every line needs it, and it doesn't change.
  static const int number = static_cast<int>(getpid());
  return number;
}

// Opens a log file for appending as fopen's "a+b" would, but never through a symlink and never
// into anything but a plain file with one name: log/ is open to every local user, who must not
// be able to point the module's appends at a file of their choosing (or stall them on a pipe).
// Such a file counts as one that can't be opened.
FILE* OpenLogFile(const std::string& path) {
  int descriptor =
      open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0666);
  if (descriptor < 0) return nullptr;
  struct stat info;
  FILE* file = nullptr;
  if (fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 1) {
    file = fdopen(descriptor, "a+b");
  }
  if (file == nullptr) close(descriptor);
  return file;
}

// The file step of WriteLogLine, after the mask test. `savedErrno` is the errno the caller found
// on entry, before anything here could change it.
int WriteLine(uint32_t level, const char* text, const void* data, uint32_t dataLength,
              int savedErrno) {
  LocalSystemTime now;
  GetLocalSystemTime(&now);
  char head[kLineHeadSize];
  snprintf(head, sizeof(head),
           "[Process:%6d Thread:%6d] [%02d/%02d/%04d %02d:%02d:%02d.%03d] [%s-%d]: ",
           ProcessNumber(), static_cast<int>(GetCurrentThreadNumber()), now.month, now.day,
           now.year, now.hour, now.minute, now.second, now.milliseconds, LogLevelName(level),
           static_cast<int>(GetWorkMode()));
  try {
    const std::string path = isScanning.load() ? GetUpdaterLogFile() : GetServiceLogFile();
    // The write side of configLock keeps lines whole and keeps log writes apart from
    // configuration writes; it is re-entrant, so a thread that holds it may log.
    ScopedWriteLock lock(GetConfigLock());
    FILE* file = OpenLogFile(path);
    if (file == nullptr) return 0;
    fprintf(file, "%s%s", head, text != nullptr ? text : "");
    if (level & kLogError) fprintf(file, " GetLastError = %d.", savedErrno);
    fputc('\n', file);
    if (data != nullptr) {
      fwrite(data, 1, dataLength, file);
      fputc('\n', file);
    }
    fclose(file);
    return 1;
  } catch (...) {
    return 0;
  }
}

// LogMessage after the mask test: formats outside the lock, then writes. An exception while
// formatting is swallowed and counts as success, as the callers have always seen it.
int FormatAndWrite(uint32_t level, const char* format, va_list arguments, int savedErrno) {
  if (format == nullptr) return 0;
  try {
    va_list measure;
    va_copy(measure, arguments);
    int length = vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    std::vector<char> text(static_cast<size_t>(length > 0 ? length : 0) + kTextSlack, '\0');
    vsnprintf(text.data(), text.size(), format, arguments);
    return WriteLine(level, text.data(), nullptr, 0, savedErrno);
  } catch (...) {
    return 1;
  }
}

}  // namespace

// The entry points test the mask once and touch their arguments only after it passed, so that
// with logging off a call costs the mask test and nothing more. errno is kept from the entry on,
// since reading the mask from the file may change it.
int LogError(const char* format, ...) {
  const int savedErrno = errno;
  if ((GetLogMask() & kLogError) == 0) return 1;
  va_list arguments;
  va_start(arguments, format);
  int result = FormatAndWrite(kLogError, format, arguments, savedErrno);
  va_end(arguments);
  return result;
}

int LogInfo(const char* format, ...) {
  const int savedErrno = errno;
  if ((GetLogMask() & kLogInfo) == 0) return 1;
  va_list arguments;
  va_start(arguments, format);
  int result = FormatAndWrite(kLogInfo, format, arguments, savedErrno);
  va_end(arguments);
  return result;
}

int LogDebug(const char* format, ...) {
  const int savedErrno = errno;
  if ((GetLogMask() & kLogDebug) == 0) return 1;
  va_list arguments;
  va_start(arguments, format);
  int result = FormatAndWrite(kLogDebug, format, arguments, savedErrno);
  va_end(arguments);
  return result;
}

int LogMessage(uint32_t level, const char* format, va_list arguments) {
  const int savedErrno = errno;
  if ((GetLogMask() & level) == 0) return 1;
  return FormatAndWrite(level, format, arguments, savedErrno);
}

int WriteLogLine(uint32_t level, const char* text, const void* data, uint32_t dataLength) {
  const int savedErrno = errno;
  if ((GetLogMask() & level) == 0) return 1;
  return WriteLine(level, text, data, dataLength, savedErrno);
}

int LogDebugData(const char* text, const void* data, uint32_t dataLength) {
  return WriteLogLine(kLogDebug, text, data, dataLength);
}

uint32_t GetLogMask() {
  if (verboseLogging.load(std::memory_order_relaxed)) return kVerboseMask;
  // Deliberately read from the file at each call and without the lock: a mask changed by hand
  // takes effect at once, and GetConfigFileBuffer needs no string object. Every log call pays
  // for this read, so it scans the file once for the one key instead of building a document.
  std::string value = kLogLevelKey.defaultValue;
  ReadIniValue(GetConfigFileBuffer(), "VS", kLogLevelKey.name, &value);
  if (value.size() > kMaskTextLimit) value.resize(kMaskTextLimit);
  if (value.c_str()[0] == '\0') return kLogNull;
  return static_cast<uint32_t>(strtol(value.c_str(), nullptr, 10));
}

bool IsDebugLogOn() { return (GetLogMask() & kLogDebug) != 0; }

void SetLogLevel(uint32_t level) {
  WriteConfigNumber(kLogLevelKey.name, static_cast<int>(level), nullptr);
  verboseLogging.store(level == kVerboseMask);
}

void SetVerboseLogging(bool verbose) { verboseLogging.store(verbose); }
bool IsVerboseLogging() { return verboseLogging.load(); }
void SetScanning(bool scanning) { isScanning.store(scanning); }
bool IsScanning() { return isScanning.load(); }

const char* LogLevelName(uint32_t level) {
  if (level & kLogNull) return "NULL";
  if (level & kLogError) return "Error";
  if (level & kLogInfo) return "Info";
  if (level & kLogDebug) return "Debug";
  if (level & kLogVerbose) return "Verbose";
  return "";
}

std::string ChooseLogPath(const std::string& directory, const std::string& fileName) {
  const std::string joined = directory + fileName;
  if (FILE* file = OpenLogFile(joined)) {
    fclose(file);
    return joined;
  }
  size_t dot = fileName.rfind('.');
  if (dot == std::string::npos) return joined;
  // A process that can't open the log writes beside it under a name of its own.
  return directory + fileName.substr(0, dot) + "(" + std::to_string(rand()) + ")" +
         fileName.substr(dot);
}

}  // namespace vsm
