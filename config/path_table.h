// The path table: every file and directory name the module uses, built from one program path.
//
// The module has no fixed installation path. Start-up calls BuildPathTable with the path of the
// host's program file, and every name below is derived from the directory that holds it (the
// root directory). All names are empty until the table is built. A directory's text ends in '/';
// a program path without '/' gives an empty root, and every name is then relative.
//
// Accessors return copies and may be called from any thread; the table is guarded by a mutex of
// its own. GetConfigFileBuffer is the exception: it hands out a fixed 1024-byte copy of the
// configuration file's name that the log writer reads without touching a string object, and it
// is written only by BuildPathTable and ResetPathTableForTesting, which run before (or after)
// any other thread reads it.
#ifndef VSM_CONFIG_PATH_TABLE_H_
#define VSM_CONFIG_PATH_TABLE_H_

#include <string>

namespace vsm {

// Fills every name of the table from `programPath`.
void BuildPathTable(const std::string& programPath);

std::string GetRootDirectory();        // directory of the program file, with the '/'
std::string GetLogDirectory();         // root + "log/"
std::string GetCacheDirectory();       // root + "cache/"
std::string GetUploadDirectory();      // root + "upload/"
std::string GetCertDirectory();        // root + "cert/"
std::string GetDumpDirectory();        // root + "dump/"
std::string GetExceptionMarkerFile();  // root + "vs.exception"
std::string GetConfigFile();           // root + "VSConfiguration.ini"
std::string GetUserConfigFile();       // root + "user_config.ini"
std::string GetServiceFile();          // root + "service.ini"
std::string GetCertFile();             // cert directory + "server.pem"
std::string GetCertKeyFile();          // cert directory + "server_key.pem"
std::string GetCertBlobFile();         // cert directory + "cert.e"
std::string GetServiceLogFile();       // log directory + "vss.log"
std::string GetUpdaterLogFile();       // log directory + "vsu.log"
std::string GetProgramPath();          // the whole program path

// The configuration file's name, cut to 1023 characters, in a buffer that lives as long as the
// process. Empty before the table is built.
const char* GetConfigFileBuffer();

// Start-up replaces a few names after the table is built.
void SetServiceLogFile(const std::string& path);
void SetUpdaterLogFile(const std::string& path);
// A null `path` leaves the program path as it is.
void SetProgramPath(const char* path);

// Empties every name again, so that tests in one process can build the table anew.
void ResetPathTableForTesting();

}  // namespace vsm

#endif  // VSM_CONFIG_PATH_TABLE_H_
