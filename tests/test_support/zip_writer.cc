#include "test_support/zip_writer.h"

#include <minizip/zip.h>
#include <zlib.h>

namespace vsm::testing {

bool WriteZip(const std::string& path, const std::vector<ZipEntry>& entries) {
  zipFile zip = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
  if (zip == nullptr) return false;
  bool written = true;
  for (const ZipEntry& entry : entries) {
    zip_fileinfo info = {};
    info.tmz_date.tm_year = static_cast<uInt>(entry.date[0]);
    info.tmz_date.tm_mon = static_cast<uInt>(entry.date[1] - 1);
    info.tmz_date.tm_mday = static_cast<uInt>(entry.date[2]);
    info.tmz_date.tm_hour = static_cast<uInt>(entry.date[3]);
    info.tmz_date.tm_min = static_cast<uInt>(entry.date[4]);
    info.tmz_date.tm_sec = static_cast<uInt>(entry.date[5]);
    const auto* bytes = reinterpret_cast<const Bytef*>(entry.data.data());
    const auto size = static_cast<unsigned>(entry.data.size());
    const uLong crc = crc32(crc32(0, nullptr, 0), bytes, size);
    written = written &&
              zipOpenNewFileInZip3(zip, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                                   entry.level == 0 ? 0 : Z_DEFLATED, entry.level, 0, -MAX_WBITS, 8,
                                   Z_DEFAULT_STRATEGY, entry.password, crc) == ZIP_OK &&
              zipWriteInFileInZip(zip, entry.data.data(), size) == ZIP_OK &&
              zipCloseFileInZip(zip) == ZIP_OK;
  }
  return zipClose(zip, nullptr) == ZIP_OK && written;
}

}  // namespace vsm::testing
