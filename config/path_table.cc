#include "config/path_table.h"

#include <cstring>
#include <mutex>

namespace vsm {

namespace {

struct PathTable {
  std::string rootDirectory;
  std::string logDirectory;
  std::string cacheDirectory;
  std::string uploadDirectory;
  std::string certDirectory;
  std::string dumpDirectory;
  std::string exceptionMarkerFile;
  std::string configFile;
  std::string userConfigFile;
  std::string serviceFile;
  std::string certFile;
  std::string certKeyFile;
  std::string certBlobFile;
  std::string serviceLogFile;
  std::string updaterLogFile;
  std::string programPath;
};

// Built on first use, so that static initialisers of other files may already read the table,
// and never destroyed, so that a thread still logging while the process exits finds it intact.
std::mutex& TableLock() {
  static std::mutex* lock = new std::mutex;
  return *lock;
}

PathTable& Table() {
  static PathTable* table = new PathTable;
  return *table;
}

char configFileBuffer[1024];

std::string Read(std::string PathTable::*field) {
  std::lock_guard<std::mutex> guard(TableLock());
  return Table().*field;
}

void Write(std::string PathTable::*field, const std::string& value) {
  std::lock_guard<std::mutex> guard(TableLock());
  Table().*field = value;
}

void CopyToConfigFileBuffer(const std::string& path) {
  strncpy(configFileBuffer, path.c_str(), sizeof(configFileBuffer) - 1);
  configFileBuffer[sizeof(configFileBuffer) - 1] = '\0';
}

}  // namespace

void BuildPathTable(const std::string& programPath) {
  std::lock_guard<std::mutex> guard(TableLock());
  PathTable& t = Table();
  size_t slash = programPath.rfind('/');
  t.rootDirectory = slash == std::string::npos ? std::string() : programPath.substr(0, slash + 1);
  t.logDirectory = t.rootDirectory + "log/";
  t.cacheDirectory = t.rootDirectory + "cache/";
  t.uploadDirectory = t.rootDirectory + "upload/";
  t.certDirectory = t.rootDirectory + "cert/";
  t.exceptionMarkerFile = t.rootDirectory + "vs.exception";
  t.programPath = programPath;
  t.configFile = t.rootDirectory + "VSConfiguration.ini";
  t.userConfigFile = t.rootDirectory + "user_config.ini";
  CopyToConfigFileBuffer(t.configFile);
  t.certFile = t.certDirectory + "server.pem";
  t.certKeyFile = t.certDirectory + "server_key.pem";
  t.dumpDirectory = t.rootDirectory + "dump/";
  t.certBlobFile = t.certDirectory + "cert.e";
  t.serviceFile = t.rootDirectory + "service.ini";
  t.serviceLogFile = t.logDirectory + "vss.log";
  t.updaterLogFile = t.logDirectory + "vsu.log";
}

std::string GetRootDirectory() { return Read(&PathTable::rootDirectory); }
std::string GetLogDirectory() { return Read(&PathTable::logDirectory); }
std::string GetCacheDirectory() { return Read(&PathTable::cacheDirectory); }
std::string GetUploadDirectory() { return Read(&PathTable::uploadDirectory); }
std::string GetCertDirectory() { return Read(&PathTable::certDirectory); }
std::string GetDumpDirectory() { return Read(&PathTable::dumpDirectory); }
std::string GetExceptionMarkerFile() { return Read(&PathTable::exceptionMarkerFile); }
std::string GetConfigFile() { return Read(&PathTable::configFile); }
std::string GetUserConfigFile() { return Read(&PathTable::userConfigFile); }
std::string GetServiceFile() { return Read(&PathTable::serviceFile); }
std::string GetCertFile() { return Read(&PathTable::certFile); }
std::string GetCertKeyFile() { return Read(&PathTable::certKeyFile); }
std::string GetCertBlobFile() { return Read(&PathTable::certBlobFile); }
std::string GetServiceLogFile() { return Read(&PathTable::serviceLogFile); }
std::string GetUpdaterLogFile() { return Read(&PathTable::updaterLogFile); }
std::string GetProgramPath() { return Read(&PathTable::programPath); }

const char* GetConfigFileBuffer() { return configFileBuffer; }

void SetServiceLogFile(const std::string& path) { Write(&PathTable::serviceLogFile, path); }
void SetUpdaterLogFile(const std::string& path) { Write(&PathTable::updaterLogFile, path); }

void SetProgramPath(const char* path) {
  if (path != nullptr) Write(&PathTable::programPath, path);
}

void ResetPathTableForTesting() {
  std::lock_guard<std::mutex> guard(TableLock());
  Table() = PathTable();
  memset(configFileBuffer, 0, sizeof(configFileBuffer));
}

}  // namespace vsm
