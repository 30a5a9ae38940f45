// The listing, single-entry and usage paths of the extraction unit.
#include "support/zip_extraction.h"

namespace vsm {

namespace {

constexpr int kCaseAsPlatform = 0;  // the zip layer compares names as the platform does
constexpr uLong kBzip2Method = 12;

constexpr char kUsageText[] =
    "Usage : miniunz [-e] [-x] [-v] [-l] [-o] [-p password] file.zip [file_to_extr.] "
    "[-d extractdir]\n\n"
    "  -e  Extract without pathname (junk paths)\n"
    "  -x  Extract with pathname\n"
    "  -v  list files\n"
    "  -l  list files\n"
    "  -d  directory to extract into\n"
    "  -o  overwrite files without prompting\n"
    "  -p  extract crypted file using password\n\n";

const char* MethodWord(const unz_file_info64& info) {
  if (info.compression_method == 0) return "Stored";
  if (info.compression_method == Z_DEFLATED) {
    // Bits 1 and 2 of the flag tell how hard the deflater worked: normal, maximum, fast.
    const uLong level = (info.flag & 6) / 2;
    return level == 0 ? "Defl:N" : level == 1 ? "Defl:X" : "Defl:F";
  }
  if (info.compression_method == kBzip2Method) return "BZip2 ";
  return "Unkn. ";
}

}  // namespace

int do_list(char* context, unzFile file) {
  ReportMessage(context, "  Length  Method     Size Ratio   Date    Time   CRC-32     Name\r\n");
  ReportMessage(context, "  ------  ------     ---- -----   ----    ----   ------     ----\r\n");
  return ForEachZipEntry(context, file, [&] {
    char name[kZipEntryNameSize] = {0};
    unz_file_info64 info;
    const int result =
        unzGetCurrentFileInfo64(file, &info, name, sizeof(name) - 1, nullptr, 0, nullptr, 0);
    if (result != UNZ_OK) {
      ReportMessage(context, "Error %d with zipfile in GetCurrentFileInfo\r\n", result);
      return result;
    }
    const unsigned long ratio =
        info.uncompressed_size > 0
            ? static_cast<unsigned long>(info.compressed_size * 100 / info.uncompressed_size)
            : 0;
    const tm_unz& date = info.tmu_date;
    ReportMessage(
        context, "%7llu  %6s%c%7llu %3lu%%  %2.2lu-%2.2lu-%2.2lu  %2.2lu:%2.2lu  %8.8lx   %s\r\n",
        static_cast<unsigned long long>(info.uncompressed_size), MethodWord(info),
        (info.flag & 1) != 0 ? '*' : ' ', static_cast<unsigned long long>(info.compressed_size),
        ratio, static_cast<unsigned long>(date.tm_mon) + 1,
        static_cast<unsigned long>(date.tm_mday), static_cast<unsigned long>(date.tm_year) % 100,
        static_cast<unsigned long>(date.tm_hour), static_cast<unsigned long>(date.tm_min), info.crc,
        name);
    return UNZ_OK;
  });
}

int do_extract_onefile(char* context, unzFile file, const char* name, int withoutPath,
                       int overwrite, const char* password) {
  if (name == nullptr || unzLocateFile(file, name, kCaseAsPlatform) != UNZ_OK) {
    ReportMessage(context, "File %s not found in the zipfile\r\n", name == nullptr ? "" : name);
    return 2;
  }
  return do_extract_currentfile(context, file, &withoutPath, &overwrite, password) == UNZ_OK ? 0
                                                                                             : 1;
}

void do_help(char* context) { ReportMessage(context, "%s", kUsageText); }

}  // namespace vsm
