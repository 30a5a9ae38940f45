#include "core/error_texts.h"

namespace vsm {

const std::string kSuccessText = "";
const std::string kFunctionNotFoundText = "Function not found";
const std::string kInvalidParameterTypeText = "Invalid parameter type.";
const std::string kInvalidParameterCountText = "Invalid parameter count.";
const std::string kUnsupportedClientText =
    "Unsupported browser client. Please try Quillport plugin edition for chrome in Chrome!";
const std::string kModuleNotFoundText = "Module not found";
const std::string kDefaultErrorText = "";
const std::string kIsUpdatingText = "is updating, please wait.";
const std::string kSignatureFailedText = "The signature failed to be verified.";
const std::string kMissingServiceExeText =
    "The file \"VeldoraneService.exe\" is missing in the update package.";
const std::string kMissingSocketDllText =
    "The file \"QuillSocket.dll\" is missing in the update package.";
const std::string kMissingImageDllText =
    "The file \"QuillImage.dll\" is missing in the update package.";
const std::string kMissingUpdaterExeText =
    "The file \"VSUpdate.exe\" is missing in the update package.";
const std::string kUnzipFailedText = "Failed to unzip file";
const std::string kCopyDirFailedText = "Failed to copy dir";
const std::string kCreateUpdateProcessFailedText = "Create update progress failed.";

const std::string kLocalOriginOnlyText = "Only support access from local machine";
const std::string kUserSidEmptyText = "User SID is empty.";

}  // namespace vsm
