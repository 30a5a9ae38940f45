#include "support/unzipper.h"

#include <cstdio>
#include <cstring>

#include "support/c_string.h"
#include "support/file_stream.h"
#include "support/module_path.h"
#include "support/zip_extraction.h"

namespace vsm {

CUnzipper::CUnzipper() { std::memset(message_, 0, sizeof(message_)); }

void CUnzipper::SetMessage(const char* format, const char* path) {
  std::memset(message_, 0, sizeof(message_));
  std::snprintf(message_, sizeof(message_), format, path == nullptr ? "" : path);
}

int CUnzipper::CheckFile(const char* path) {
  if (GetFileAttributesEx(path) != kInvalidFileAttributes) return 1;
  SetMessage("Cannot find the specified file \"%s\"", path);
  return 0;
}

int CUnzipper::CheckFolder(const char* path) {
  const uint32_t attributes = GetFileAttributesEx(path);
  if (attributes == kFileAttributeDirectory) return 1;
  SetMessage(attributes == kInvalidFileAttributes ? "Cannot find the specified folder \"%s\""
                                                  : "\"%s\" is not a folder",
             path);
  return 0;
}

int CUnzipper::Extract(const char* zipPath, const char* folder) {
  if (!CheckFile(zipPath)) return 0;
  char parent[kPathBufferSize] = {0};
  SafeStringCopy(parent, folder, sizeof(parent));
  TrimPathEnd(parent);
  EnsureParentDirectories(parent, nullptr);
  char context[kZipMessageSize] = {0};
  if (MiniunzExtract(context, zipPath, folder)) return 1;
  SafeStringCopy(message_, context, sizeof(message_));
  return 0;
}

}  // namespace vsm
