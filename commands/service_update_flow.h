// The service update flow: a new service package, a zip lying beside the program, is unpacked
// into the cache folder and the updater found in it is started.
//
// UpdateService is the handler a method table would name; no command of this module reaches it,
// and "LoadZipFromBytes" and "CheckUpdateFile" end as unknown functions. The flow works on behalf
// of a ManagerClient: failures go into the client's shared error code and text (SetError), and
// the handler answers with them, as every handler does. The package is "<program
// folder>Service_<version>.zip" and is deleted after every try; it unpacks into
// "<cache>VeldoraneService/", which stays for the updater when it is started and is removed when
// the unpacking fails. No signature is verified. The updater is "<cache>VeldoraneService/VSUpdate",
// spawned with the root folder as its one argument and an empty environment, and not waited for.
// The configuration key IfUpdate ("1": an update is under way) is only read here, and written
// "0" after a failed start of the updater.
//
// Not thread-safe: two updates at once share the unpack folder and the client's error state, and
// the extraction changes the working directory of the whole process. Working texts are
// 1024-byte buffers filled by the checked formatter: a path that doesn't fit ends the process.
#ifndef VSM_COMMANDS_SERVICE_UPDATE_FLOW_H_
#define VSM_COMMANDS_SERVICE_UPDATE_FLOW_H_

#include <string>

namespace vsm {

class HttpParamRequest;
class ManagerClient;

extern const char ServiceFolderName[];  // "VeldoraneService"

class ServiceUpdateFlow {
 public:
  // `client` keeps the error state and outlives the flow.
  explicit ServiceUpdateFlow(ManagerClient* client) : client_(client) {}

  // The handler. One optional parameter, the package's version ("16, 2, 6, 1212"). Answers false
  // with -2373 "Veldorane Service is updating, please wait." while IfUpdate is "1"; true without
  // unpacking when the package is not newer than the service; false with the stored code after
  // a failed unpacking (-2405); else whether the updater started (-2407 when it didn't).
  void UpdateService(HttpParamRequest* request);

  // Whether IfUpdate equals "1".
  bool IsUpdating();
  // Whether the leading number of `version` is at most that of VSVersion (default "0"). Only
  // the leading number counts, so "16, 3" is as current as "16, 2". An empty version is never
  // current.
  bool IsVersionCurrent(const std::string& version);
  // Unpacks the package into a fresh unpack folder and verifies it. On failure the folder is
  // removed, the error set, and the result false.
  bool UnpackUpdatePackage(const char* packagePath);
  // CheckUpdateFolderSignature, or -2400 "The signature failed to be verified." when it says no.
  bool VerifyUpdateFolder(const char* folder);
  // True, always: the place where a scan of the folder's signatures belongs.
  bool CheckUpdateFolderSignature(const char* folder);
  // Opens `path` to everybody (chmod 777) and spawns it. On failure IfUpdate becomes "0" and the
  // error is -2407 "Create update progress failed.".
  bool StartUpdateProcess(const char* path);

 private:
  ManagerClient* client_;
};

}  // namespace vsm

#endif  // VSM_COMMANDS_SERVICE_UPDATE_FLOW_H_
