// GetProfileString and WriteProfileString: single-value access to an ini file.
//
// These are the two calls through which the configuration store reads and writes one value.
// Nothing is cached: each call loads the whole file into a fresh CIniDocument, and a write saves
// the whole file again, so a change made by another program shows at the next call. The calls
// take no lock; callers that share a file serialise them. Grammar and name rules are those of
// CIniDocument (support/ini_document.h): names ignore case and lose " \t" at both ends, values
// are kept as they are, and a write drops the file's comments, blank lines and order.
#ifndef VSM_SUPPORT_PROFILE_STRING_H_
#define VSM_SUPPORT_PROFILE_STRING_H_

namespace vsm {

// Reads `key` of `section` from `fileName`, or `defaultValue` when the file can't be read or the
// section or the key is missing. Copies at most `outputSize - 2` characters and a terminating
// NUL into `output`: a strncpy of `outputSize - 1` bytes whose last byte is then zeroed, so the
// last byte of `output` is left as it was (callers hand in zeroed buffers). Returns the length
// of the whole value, also when the copy was shortened.
// Nulls never crash: a null `defaultValue` is an empty default; a null `section`, `key` or
// `fileName` finds nothing and gives the default. A null `output` or an `outputSize` below 1
// receives nothing; an `outputSize` of 1 receives only the NUL.
int GetProfileString(const char* section, const char* key, const char* defaultValue, char* output,
                     int outputSize, const char* fileName);

// Sets `key` of `section` to `value` in `fileName`, creating the file, the section or the key
// as needed; the other entries of the file stay. A file that can't be read is replaced by one
// that holds only the new value. Returns 1, also when the save failed: no caller acts on it.
// Every argument must be a real string; a null one throws the std::logic_error that
// std::string gives for a null source, before any file is touched.
int WriteProfileString(const char* section, const char* key, const char* value,
                       const char* fileName);

}  // namespace vsm

#endif  // VSM_SUPPORT_PROFILE_STRING_H_
