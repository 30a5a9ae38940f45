// Folder trees: deleting, copying, and purging old sibling folders.
//
// Paths are 8-bit strings with '/' as separator. The functions that copy their path into a
// 1024-byte buffer (DeleteTree, CopyTree, PurgeOldSiblings) refuse a longer path with 0 and
// touch nothing, rather than act on a cut one. Results are 1 for success and 0 for failure
// unless said otherwise; nothing throws. Only DeleteTree prints. No state; two calls on the same
// tree at once give no useful result.
#ifndef VSM_SUPPORT_FILE_TREE_H_
#define VSM_SUPPORT_FILE_TREE_H_

#include <sys/types.h>

namespace vsm {

// Gives `path` and everything below it the permission bits `mode`, as "chmod -R" with a numeric
// mode does: files take `mode` exactly, folders keep their set-user-ID and set-group-ID bits, and
// symlinks are neither changed nor followed, the top one included (a trailing '/' doesn't make it
// followed). Entries are reached through open folder descriptors, so one swapped for a link in
// the meantime isn't followed either. Folders deeper than 256 levels below `path` are left as
// they are. 1 when every entry that isn't a link took the mode; 0 otherwise, also for a null,
// empty or missing path. Nothing prints; entries that fail are passed over.
int ChangeTreeMode(const char* path, mode_t mode);
// Quietly deletes a folder and what it holds, following links (stat). Deliberately keeps its
// early stop, which callers have always seen: a sub-folder deleted with success ends the scan,
// leaves the rest of the folder in place and gives 1; a sub-folder that couldn't be deleted lets
// the scan go on; an entry that can't be examined or unlinked ends it with 0. When the scan runs
// to the end the result is whether rmdir of the folder worked. A folder that can't be opened
// gives 0.
int RemoveTree(const char* path);
// A folder goes to RemoveTree, anything else to unlink. 1 on success; 0 for an empty, null or
// missing path or a failure.
int DeletePath(const char* path);
// Deletes what the folder holds, depth first, without following links, printing
// "<path> directory\n" or "<path> file\n" on standard output for each entry and calling perror
// for one it can't examine. The first failure to delete ends everything with 0, leaving the
// folder. With `removeSelf` the folder itself (or a file of that name) goes last, and the result
// is whether that worked; otherwise 1. A folder that can't be opened is no failure.
// Trailing '\' are removed from `path` before the scan.
int DeleteTree(const char* path, int removeSelf);
// Copies the whole file under an exclusive lock taken without waiting, replacing `target` whole
// (support/atomic_file.h; a new target gets mode 0777). Deliberately gives 1, target untouched,
// when `source` can't be read (callers copy what they can and go on), and 0, target untouched,
// for an empty source. 0, target untouched, when it can't be written. The third argument is
// ignored.
int CopyFileLocked(const char* source, const char* target, int ignored);
// Copies the files of `source` into `target`, making target folders on the way, and with
// `recurse` the sub-folders too. Folders are only made for files, so an empty source folder
// leaves nothing in the target. The result is that of the last file copied (CopyFileLocked), 1
// when there was none or `source` can't be opened, and 0 when a target folder can't be made or a
// sub-folder's copy gave 0. Entries that can't be examined are passed over.
int CopyTree(const char* source, const char* target, int recurse);
// RemoveTree on every folder beside `path` (trailing '/' ignored), `path` itself included, whose
// modification date lies before yesterday by local calendar: an earlier year, an earlier month,
// or a day at least 2 lower. The rule is deliberately coarse: one day across a month boundary is
// enough. Files are left alone. 0 when `path` has no '/', otherwise 1, also when the parent
// can't be opened.
int PurgeOldSiblings(const char* path);

}  // namespace vsm

#endif  // VSM_SUPPORT_FILE_TREE_H_
