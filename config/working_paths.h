// Start-up of the module's working tree: paths, folders, log files and cached settings.
//
// The module has no fixed installation path. At its first start it takes the directory of the
// host's program file as its root, builds the path table from it, makes the cache, log and
// upload folders, chooses the log files, and caches the settings that are read afterwards
// without touching a file. Only the first call does the work: a later one, recognised by a
// non-empty root directory, returns at once, so a changed configuration file isn't read again.
// Start-up is meant to run on one thread before any other part of the module is used; it takes
// no lock for its test. Nothing fails visibly: folders that can't be made show up later as log
// or file operations that fail. No shell runs: any program path, however long or odd, starts.
#ifndef VSM_CONFIG_WORKING_PATHS_H_
#define VSM_CONFIG_WORKING_PATHS_H_

#include <string>

namespace vsm {

// Start-up from the path of this process's program file. With `adjustPermissions` the log and
// dump folders and all they hold get mode 0777 as "chmod 777 -R" gives it (without following
// links), and the dump folder is made.
void InitializeWorkingPaths(bool adjustPermissions);
// The same from a given program path.
void InitializeWorkingPathsFrom(const std::string& programPath, bool adjustPermissions);

// The 32 lower-case hexadecimal digits drawn at start-up; empty before it.
const char* GetInstanceToken();

// Removes the cache folder and what it holds; 1 on success, as RemoveTree gives it.
int RemoveCacheDirectory();

}  // namespace vsm

#endif  // VSM_CONFIG_WORKING_PATHS_H_
