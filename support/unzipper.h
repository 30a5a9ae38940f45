// CUnzipper: unpacks a zip archive into a folder and says why when it can't.
//
// Extract runs the extraction unit (zip_extraction.h) and keeps its last message. The message
// lives in the object, 1024 bytes, empty at construction; a failure replaces it, a success leaves
// it as it was. Extract changes the working directory of the whole process to the target folder
// and leaves it there, whatever happens to the extraction itself: no other thread may rely on
// relative paths meanwhile. One object belongs to one thread.
#ifndef VSM_SUPPORT_UNZIPPER_H_
#define VSM_SUPPORT_UNZIPPER_H_

#include <cstddef>

namespace vsm {

class CUnzipper {
 public:
  CUnzipper();

  // Extracts every entry of `zipPath` into `folder`, which the caller has made (the folders
  // above it are made here). 1 on success, which includes entries whose files couldn't be
  // created (they are passed over). 0 with the message "Cannot find the specified file \"%s\""
  // when `zipPath` doesn't exist, or the extraction unit's last message ("Cannot open %s or
  // %s.zip", "Error changing into %s", or an entry error ending in "\r\n").
  int Extract(const char* zipPath, const char* folder);
  // The last failure's message.
  const char* GetMessage() const { return message_; }
  // 1 when `path` exists (as anything); otherwise 0 with "Cannot find the specified file \"%s\"".
  int CheckFile(const char* path);
  // 1 for a folder; otherwise 0 with "Cannot find the specified folder \"%s\"" for a missing
  // path and "\"%s\" is not a folder" for anything else.
  int CheckFolder(const char* path);

 private:
  void SetMessage(const char* format, const char* path);

  char message_[1024];
};

}  // namespace vsm

#endif  // VSM_SUPPORT_UNZIPPER_H_
