// The file operations the zip reader works through, built on the module's file kit.
//
// The zip layer opens, reads and seeks its archive only through this table, so that archives go
// through the same Win32-shaped calls as every other file of the module. A stream is a small
// record holding the FILE* and the last error number. Offsets are 32 bits wide in both
// directions: an archive past 2 GiB can't be read, whatever the zip format allows. The table has
// no state of its own; each stream belongs to the one zip handle that opened it.
#ifndef VSM_SUPPORT_ZIP_FILE_FUNCTIONS_H_
#define VSM_SUPPORT_ZIP_FILE_FUNCTIONS_H_

#include <minizip/ioapi.h>

namespace vsm {

// Fills every slot of `table`; the opaque pointer is null.
//   open:   (mode & 3) == 1 reads an existing file; else bit 4 opens an existing file for
//           reading and writing, bit 8 creates or truncates one; any other mode and a null path
//           give null.
//   read, write: the count moved; a failure stores the error number (38 as 0).
//   tell:   the position cut to 32 bits; seek: 0, or -1 for an unknown origin or a failure.
//   close:  0, or -1 for a record without a stream; test-error: the stored error, -1 for null.
void FillZipFileFunctions(zlib_filefunc64_def* table);

}  // namespace vsm

#endif  // VSM_SUPPORT_ZIP_FILE_FUNCTIONS_H_
