#include "commands/service_update_flow.h"

#include <spawn.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdlib>

#include "config/config_store.h"
#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "core/error_texts.h"
#include "core/manager_client.h"
#include "host/shell_command.h"
#include "protocol/parameter_conversions.h"
#include "support/c_string.h"
#include "support/checked_format.h"
#include "support/file_stream.h"
#include "support/file_tree.h"
#include "support/module_path.h"
#include "support/unzipper.h"

namespace vsm {

const char ServiceFolderName[] = "VeldoraneService";

namespace {

constexpr size_t kWorkTextSize = 1024;

// The version's leading number as a signed 32-bit value; strtol stops at the first comma.
int32_t LeadingNumber(const std::string& text) {
  return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

}  // namespace

void ServiceUpdateFlow::UpdateService(HttpParamRequest* request) {
  client_->SetError(0, kDefaultErrorText);
  std::string version;
  const ResultList& parameters = request->GetParameters();
  if (!parameters.empty() && !ValueText(parameters[0], &version)) version.clear();

  if (IsUpdating()) {
    char text[kWorkTextSize] = {0};
    CheckedFormat(text, sizeof(text), "%s %s", ServiceDisplayName.c_str(), kIsUpdatingText.c_str());
    client_->SetError(kErrorIsUpdating, text);
    LogError("%s", text);
    request->SetResult(false, nullptr, 0, client_->GetErrorCode(), client_->GetErrorText());
    return;
  }
  if (IsVersionCurrent(version)) {
    request->SetResult(true, nullptr, 0, 0, kSuccessText);
    return;
  }

  char programFolder[kPathBufferSize];
  GetModuleDirectory(programFolder);
  char package[kWorkTextSize] = {0};
  CheckedFormat(package, sizeof(package), "%sService_%s.zip", programFolder, version.c_str());
  const bool unpacked = UnpackUpdatePackage(package);
  DeleteFile(package);  // a package is tried once, whatever came of it
  if (!unpacked) {
    request->SetResult(false, nullptr, 0, client_->GetErrorCode(), client_->GetErrorText());
    return;
  }
  char updater[kWorkTextSize] = {0};
  CheckedFormat(updater, sizeof(updater), "%s%s%sVSUpdate", GetCacheDirectory().c_str(),
                ServiceFolderName, "/");
  const bool started = StartUpdateProcess(updater);
  request->SetResult(started, nullptr, 0, client_->GetErrorCode(), client_->GetErrorText());
}

bool ServiceUpdateFlow::IsUpdating() { return ReadConfigKey(kIfUpdateKey) == "1"; }

bool ServiceUpdateFlow::IsVersionCurrent(const std::string& version) {
  if (version.empty()) return false;
  std::string installed = ReadConfigKey(kVSVersionKey);
  installed = installed.substr(0, installed.find(','));
  installed = installed.substr(0, installed.find(' '));
  return LeadingNumber(version) <= LeadingNumber(installed);
}

bool ServiceUpdateFlow::UnpackUpdatePackage(const char* packagePath) {
  char folder[kWorkTextSize] = {0};
  CheckedFormat(folder, sizeof(folder), "%s%s%s", GetCacheDirectory().c_str(), ServiceFolderName,
                "/");
  DeleteTree(folder, 1);  // nothing of an earlier try may remain
  if (!EnsureParentDirectories(folder, nullptr)) {
    LogError("Failed to create dir %s, %d", folder, errno);
  }
  CUnzipper unzipper;
  if (!unzipper.Extract(packagePath, folder)) {
    const int error = errno;
    char text[kWorkTextSize] = {0};
    CheckedFormat(text, sizeof(text), "%s %s %d", kUnzipFailedText.c_str(), unzipper.GetMessage(),
                  error);
    client_->SetError(kErrorUnzipFailed, text);
    LogError("%s", text);
  } else if (VerifyUpdateFolder(folder)) {
    return true;
  }
  DeleteTree(folder, 1);
  return false;
}

bool ServiceUpdateFlow::VerifyUpdateFolder(const char* folder) {
  if (CheckUpdateFolderSignature(folder)) return true;
  client_->SetError(kErrorSignatureFailed, kSignatureFailedText);
  LogError("%s", kSignatureFailedText.c_str());
  return false;
}

bool ServiceUpdateFlow::CheckUpdateFolderSignature(const char* folder) {
  // The pattern a scan of the folder's signature files would use; no scan is made yet, so the
  // folder passes.
  char trimmed[kWorkTextSize] = {0};
  SafeStringCopy(trimmed, folder, sizeof(trimmed));
  TrimRightChar(trimmed, '\\');
  char pattern[kWorkTextSize] = {0};
  CheckedFormat(pattern, sizeof(pattern), "%s\\*.*", trimmed);
  return true;
}

bool ServiceUpdateFlow::StartUpdateProcess(const char* path) {
  // The root folder is the updater's argument; its text must live until the spawn has copied it.
  const std::string root = GetRootDirectory();
  LogDebug("Create update process begin: %s", path);
  char command[kWorkTextSize] = {0};
  CheckedFormat(command, sizeof(command), "chmod 777 \"%s\"", path);
  RunShellCommand(command);

  char* const arguments[] = {const_cast<char*>(path), const_cast<char*>(root.c_str()), nullptr};
  char* const emptyEnvironment[] = {nullptr};
  pid_t child = 0;
  const int error = posix_spawnp(&child, path, nullptr, nullptr, arguments, emptyEnvironment);
  if (error == 0) {
    LogInfo("Create Update process succeed.");
    return true;
  }
  LogDebug("Create update process failed %d", error);
  WriteConfigKey(kIfUpdateKey, "0");
  client_->SetError(kErrorCreateUpdateProcessFailed, kCreateUpdateProcessFailedText);
  LogError("%s", kCreateUpdateProcessFailedText.c_str());
  return false;
}

}  // namespace vsm
