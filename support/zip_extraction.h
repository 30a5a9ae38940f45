// The extraction unit behind CUnzipper: unpacks a zip archive into a folder, and lists it.
//
// Every call takes a leading `context`, a caller-zeroed message buffer of kZipMessageSize bytes.
// The unit never prints: it reports through ReportMessage, which replaces the buffer's text, so
// only the last message survives. After a failure that message is an error line (ending in
// "\r\n" for entry errors); after a success it is whatever came last, usually " extracting: ...".
// Results are the zip layer's codes (UNZ_OK 0, UNZ_PARAMERROR -102, UNZ_BADZIPFILE -103,
// UNZ_INTERNALERROR -104, ...) unless said otherwise.
//
// MiniunzExtract changes the working directory of the whole process to the target folder and
// leaves it there; entry names are then relative to it. It is not safe beside any thread that
// uses relative paths. Archives are read through FillZipFileFunctions, so past 2 GiB they can't
// be read. The zip layer has no password support in use: the extracting paths pass no password,
// and an encrypted entry fails on its data.
#ifndef VSM_SUPPORT_ZIP_EXTRACTION_H_
#define VSM_SUPPORT_ZIP_EXTRACTION_H_

#include <minizip/unzip.h>

#include <cstddef>
#include <functional>

namespace vsm {

constexpr size_t kZipMessageSize = 1024;
// Entry names are read into buffers of this size; longer names are cut to one byte less.
constexpr size_t kZipEntryNameSize = 256;

// vsnprintf into `context`, replacing what was there; a text longer than the buffer is cut.
void ReportMessage(char* context, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Opens `zipPath` (or, failing that, `zipPath` with ".zip" behind it; a path longer than 254
// characters is cut before ".zip" goes on), changes into `folder`, and extracts every entry
// with its path, replacing files in the way. 1 when every entry went through; an entry whose
// file can't be created is passed over and doesn't count as a failure. 0 with the message
// "Cannot open %s or %s.zip", "Error changing into %s", or the last entry error.
int MiniunzExtract(char* context, const char* zipPath, const char* folder);

// Calls `visit` for each entry of `file` in order, the entry being the current one. A count that
// can't be read is reported and taken as no entries. A non-zero result of `visit` ends the walk
// and is the result; so is a failed step to the next entry, which is reported. Otherwise 0.
int ForEachZipEntry(char* context, unzFile file, const std::function<int()>& visit);

// Extracts the entries of `file` in order, stopping at the first entry that gives a non-zero
// result, which is then the result. `withoutPath` puts every file into the working directory
// under its bare name and makes no folders. `overwrite` is not looked at: files in the way are
// always replaced.
int do_extract(char* context, unzFile file, int withoutPath, int overwrite, const char* password);
// Extracts the current entry of `file`. A name ending in '/' or '\' is a folder: it is made
// (unless `*withoutPath`), and nothing else happens. A file's missing folders are made when the
// file can't be created at first. The file gets the entry's date as access and modification
// time. A file that still can't be created is reported as "Error opening %s\r\n" and gives 0,
// so extraction goes on; so does an entry whose name would land outside the working directory
// (absolute, or with a ".." component). Names are read into 256 bytes: longer ones are cut to
// 255 characters.
int do_extract_currentfile(char* context, unzFile file, const int* withoutPath, int* overwrite,
                           const char* password);
// Extracts the one entry called `name` (compared as the platform compares file names). 2 with
// "File %s not found in the zipfile\r\n" when there is none; otherwise 0 when the entry went
// through and 1 when it didn't.
int do_extract_onefile(char* context, unzFile file, const char* name, int withoutPath,
                       int overwrite, const char* password);
// Reports the listing of `file` line by line (a two-line head, then one row per entry), so that
// the last row is what stays in `context`. A row reads: uncompressed size in 7 columns, the
// method ("Stored", "Defl:N", "Defl:X", "Defl:F", "BZip2 ", "Unkn. ") and '*' for an encrypted
// entry, compressed size in 7 columns, the ratio of compressed to uncompressed size in percent,
// the date as MM-DD-YY, the time, the CRC and the name. 0, or the zip layer's code when an
// entry can't be read.
int do_list(char* context, unzFile file);
// Reports the usage text of the unit.
void do_help(char* context);
// Makes `path` and the folders above it with mode 0775, one '/' at the end ignored. 1 when the
// walk ran through (folders that already exist are fine); 0 for an empty path; -104 with
// "Error allocating memory" when the copy can't be made.
int makedir(char* context, const char* path);
// Sets the access and modification times of `path` to the entry's date, read as local time.
// `dosDate` is not used; failures are not looked at.
void change_file_date(char* context, const char* path, uLong dosDate, tm_unz date);

}  // namespace vsm

#endif  // VSM_SUPPORT_ZIP_EXTRACTION_H_
