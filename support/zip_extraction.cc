#include "support/zip_extraction.h"

#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "support/c_string.h"
#include "support/file_stream.h"
#include "support/zip_file_functions.h"

namespace vsm {

namespace {

constexpr size_t kZipNameSize = 272;
constexpr size_t kZipNameLongest = 254;  // leaves room for ".zip" and its NUL
constexpr uInt kCopyBlockSize = 8192;
// The error number the folder walk of makedir gives up on. On Linux mkdir never reports it (a
// missing parent is 2), so the walk always runs to the end; the number stays as the unit has
// always had it.
constexpr int kPathNotFound = 3;

const char* LastNamePart(const char* name) {
  const char* part = name;
  for (const char* p = name; *p != '\0'; ++p) {
    if (*p == '/' || *p == '\\') part = p + 1;
  }
  return part;
}

// Whether a name taken from the archive would reach outside the working directory: an absolute
// name, or one with a ".." component.
bool LandsOutsideFolder(const char* name) {
  if (name[0] == '/' || name[0] == '\\') return true;
  for (const char* part = name;;) {
    const char* end = part;
    while (*end != '\0' && *end != '/' && *end != '\\') ++end;
    if (end - part == 2 && part[0] == '.' && part[1] == '.') return true;
    if (*end == '\0') return false;
    part = end + 1;
  }
}

int CloseCurrentEntry(char* context, unzFile file) {
  const int result = unzCloseCurrentFile(file);
  if (result != UNZ_OK) {
    ReportMessage(context, "Error %d with zipfile in CloseCurrentFile\r\n", result);
  }
  return result;
}

FILE* CreateEntryFile(const char* target) {
  return OpenFileEx(target, kGenericRead | kGenericWrite, 1, nullptr, kCreateAlways,
                    kFileAttributeNormal);
}

// Copies the open entry into `output` block by block and closes both. The result is the entry's.
int CopyEntry(char* context, unzFile file, FILE* output, const char* target,
              const unz_file_info64& info, void* buffer) {
  for (;;) {
    const int got = unzReadCurrentFile(file, buffer, kCopyBlockSize);
    if (got < 0) {
      ReportMessage(context, "Error %d with zipfile in ReadCurrentFile\r\n", got);
      CloseFile(output);
      unzCloseCurrentFile(file);
      return got;
    }
    if (got == 0) {
      CloseFile(output);
      change_file_date(context, target, info.dosDate, info.tmu_date);
      return CloseCurrentEntry(context, file);
    }
    if (!WriteFile(output, buffer, static_cast<uint32_t>(got), nullptr)) {
      ReportMessage(context, "Error in writing extracted file\r\n");
      CloseFile(output);
      unzCloseCurrentFile(file);
      return UNZ_ERRNO;
    }
  }
}

}  // namespace

void ReportMessage(char* context, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(context, kZipMessageSize, format, arguments);
  va_end(arguments);
}

int MiniunzExtract(char* context, const char* zipPath, const char* folder) {
  if (zipPath == nullptr) zipPath = "";
  char zipName[kZipNameSize] = {0};
  std::strncpy(zipName, zipPath, kZipNameLongest);
  zlib_filefunc64_def functions;
  FillZipFileFunctions(&functions);

  unzFile file = unzOpen2_64(zipPath, &functions);
  if (file == nullptr) {
    std::strcat(zipName, ".zip");
    file = unzOpen2_64(zipName, &functions);
  }
  if (file == nullptr) {
    ReportMessage(context, "Cannot open %s or %s.zip", zipPath, zipPath);
    return 0;
  }
  // Entry names are relative, so extraction happens from inside the folder. Nothing changes the
  // directory back: callers know that the process stays there.
  if (folder == nullptr || chdir(folder) != 0) {
    unzClose(file);
    ReportMessage(context, "Error changing into %s", folder == nullptr ? "" : folder);
    return 0;
  }
  const int result = do_extract(context, file, 0, 1, nullptr);
  unzClose(file);
  return result == UNZ_OK ? 1 : 0;
}

int ForEachZipEntry(char* context, unzFile file, const std::function<int()>& visit) {
  unz_global_info64 global;
  ZPOS64_T count = 0;
  const int infoResult = unzGetGlobalInfo64(file, &global);
  if (infoResult != UNZ_OK) {
    ReportMessage(context, "Error %d with zipfile in GetGlobalInfo \r\n", infoResult);
  } else {
    count = global.number_entry;
  }
  for (ZPOS64_T i = 0; i < count; ++i) {
    const int result = visit();
    if (result != UNZ_OK) return result;
    if (i + 1 < count) {
      const int next = unzGoToNextFile(file);
      if (next != UNZ_OK) {
        ReportMessage(context, "Error %d with zipfile in GoToNextFile\r\n", next);
        return next;
      }
    }
  }
  return UNZ_OK;
}

int do_extract(char* context, unzFile file, int withoutPath, int overwrite, const char* password) {
  return ForEachZipEntry(context, file, [&] {
    return do_extract_currentfile(context, file, &withoutPath, &overwrite, password);
  });
}

int do_extract_currentfile(char* context, unzFile file, const int* withoutPath, int* overwrite,
                           const char* password) {
  // One byte is kept back, so that a name that fills the buffer still ends in a NUL.
  char name[kZipEntryNameSize] = {0};
  unz_file_info64 info;
  int result = unzGetCurrentFileInfo64(file, &info, name, sizeof(name) - 1, nullptr, 0, nullptr, 0);
  if (result != UNZ_OK) {
    ReportMessage(context, "Error %d with zipfile in GetCurrentFileInfo\r\n", result);
    return result;
  }
  void* buffer = std::malloc(kCopyBlockSize);
  if (buffer == nullptr) {
    ReportMessage(context, "Error allocating memory\r\n");
    return UNZ_INTERNALERROR;
  }

  char* fileName = name + (LastNamePart(name) - name);
  // Beyond the unit's own rules: a name that would land outside the folder (absolute, or with a
  // ".." component) is refused like a file that can't be opened, and extraction goes on.
  const bool outside = LandsOutsideFolder(*withoutPath ? fileName : name);
  if (*fileName == '\0') {
    if (!*withoutPath) {
      if (outside) {
        ReportMessage(context, "Error opening %s\r\n", name);
      } else {
        ReportMessage(context, "Creating directory: %s\r\n", name);
        mkdir(name, 0775);
      }
    }
    std::free(buffer);
    return UNZ_OK;
  }

  const char* target = *withoutPath ? fileName : name;
  result = unzOpenCurrentFilePassword(file, password);
  if (result != UNZ_OK) {
    ReportMessage(context, "Error %d with zipfile in OpenCurrentFilePassword\r\n", result);
    unzCloseCurrentFile(file);
    std::free(buffer);
    return result;
  }
  FILE* output = outside ? nullptr : CreateEntryFile(target);
  if (output == nullptr && !outside && !*withoutPath && fileName != name) {
    // The folders of the name may be missing: make them and try once more.
    const char separator = fileName[-1];
    fileName[-1] = '\0';
    makedir(context, name);
    fileName[-1] = separator;
    output = CreateEntryFile(target);
  }
  if (output == nullptr) {
    ReportMessage(context, "Error opening %s\r\n", target);
    result = CloseCurrentEntry(context, file);
  } else {
    ReportMessage(context, " extracting: %s\r\n", target);
    result = CopyEntry(context, file, output, target, info, buffer);
  }
  std::free(buffer);
  return result;
}

int makedir(char* context, const char* path) {
  if (path == nullptr || path[0] == '\0') return 0;
  const size_t length = std::strlen(path);
  auto* copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) {
    ReportMessage(context, "Error allocating memory");
    return UNZ_INTERNALERROR;
  }
  std::memcpy(copy, path, length + 1);
  if (copy[length - 1] == '/') copy[length - 1] = '\0';
  if (mkdir(copy, 0775) == 0) {
    std::free(copy);
    return 1;
  }
  char* p = copy + (copy[0] != '\0' ? 1 : 0);
  for (;;) {
    while (*p != '\0' && *p != '\\' && *p != '/') ++p;
    const char held = *p;
    *p = '\0';
    if (mkdir(copy, 0775) == -1 && errno == kPathNotFound) {
      ReportMessage(context, "Couldn't create directory %s", copy);
      std::free(copy);
      return 0;
    }
    if (held == '\0') break;
    *p++ = held;
  }
  std::free(copy);
  return 1;
}

void change_file_date(char* context, const char* path, uLong dosDate, tm_unz date) {
  struct tm local;
  std::memset(&local, 0, sizeof(local));
  local.tm_sec = static_cast<int>(date.tm_sec);
  local.tm_min = static_cast<int>(date.tm_min);
  local.tm_hour = static_cast<int>(date.tm_hour);
  local.tm_mday = static_cast<int>(date.tm_mday);
  local.tm_mon = static_cast<int>(date.tm_mon);
  local.tm_year = static_cast<int>(date.tm_year > 1900 ? date.tm_year - 1900 : date.tm_year);
  local.tm_isdst = -1;
  struct utimbuf times;
  times.actime = times.modtime = std::mktime(&local);
  utime(path, &times);
}

}  // namespace vsm
