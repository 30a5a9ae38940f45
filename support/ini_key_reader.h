// Reading one value of an ini file in a single pass over its bytes, without building a document.
//
// The answer is exactly what CIniDocument (support/ini_document.h) gives for the same bytes and
// names: the same lines, the same sections (case-blind, trimmed, "[abc] " opening "abc]"), keys
// case-blind and trimmed, the value of the last line that sets the key, blanks kept. Names
// compare as C strings, so a name ends at its first NUL, as in the document's maps. The point
// is cost: a value that is read at every log call is found by one scan of the file, with no
// maps, no per-line strings and no teardown. Nothing is cached; each call reads the file again.
// Functions keep no state and are thread-safe; nothing throws except std::bad_alloc.
#ifndef VSM_SUPPORT_INI_KEY_READER_H_
#define VSM_SUPPORT_INI_KEY_READER_H_

#include <string>
#include <string_view>

namespace vsm {

// Looks for `key` in `section` in the text of an ini file. True with the value in `*value`
// (a view into `text`, possibly empty) when the document would hold the key; false otherwise,
// leaving `*value` alone.
bool FindIniValue(std::string_view text, const char* section, const char* key,
                  std::string_view* value);

// Opens `fileName`, reads it whole, closes it and looks the key up as FindIniValue does. False
// when the file can't be opened or doesn't hold the key; a read error ends the text where it
// happened, as the document's stream does. Made for regular files: a read that gives less than
// it asked for is taken as the end of the file.
bool ReadIniValue(const char* fileName, const char* section, const char* key, std::string* value);

}  // namespace vsm

#endif  // VSM_SUPPORT_INI_KEY_READER_H_
