// The error codes and texts the command core shares.
//
// Clients match these texts byte for byte, so they are fixed, odd spellings included: code
// -2405 goes with two different texts, and "progress" in the last one differs from the
// "process" of the log lines around it. Built by static initialisers before any export is
// entered.
#ifndef VSM_CORE_ERROR_TEXTS_H_
#define VSM_CORE_ERROR_TEXTS_H_

#include <cstdint>
#include <string>

namespace vsm {

// The sixteen shared texts, in declaration order.
extern const std::string kSuccessText;                // "" (code 0)
extern const std::string kFunctionNotFoundText;       // "Function not found" (-2200)
extern const std::string kInvalidParameterTypeText;   // "Invalid parameter type." (-2405)
extern const std::string kInvalidParameterCountText;  // "Invalid parameter count." (-2202)
extern const std::string kUnsupportedClientText;      // -2205
extern const std::string kModuleNotFoundText;         // no code uses it
extern const std::string kDefaultErrorText;           // "" (the handlers' starting errorText)
extern const std::string kIsUpdatingText;             // -2373, behind the service's name
extern const std::string kSignatureFailedText;        // -2400
extern const std::string kMissingServiceExeText;      // no code uses the four "missing" texts
extern const std::string kMissingSocketDllText;
extern const std::string kMissingImageDllText;
extern const std::string kMissingUpdaterExeText;
extern const std::string kUnzipFailedText;                // -2405, with more text behind it
extern const std::string kCopyDirFailedText;              // no code uses it
extern const std::string kCreateUpdateProcessFailedText;  // -2407

// Texts outside the table.
extern const std::string kLocalOriginOnlyText;  // "Only support access from local machine" (-1)
extern const std::string kUserSidEmptyText;     // "User SID is empty." (-2408)

constexpr int32_t kErrorLocalOriginOnly = -1;
constexpr int32_t kErrorFunctionNotFound = -2200;
constexpr int32_t kErrorInvalidParameterCount = -2202;
constexpr int32_t kErrorUnsupportedClient = -2205;
constexpr int32_t kErrorIsUpdating = -2373;
constexpr int32_t kErrorSignatureFailed = -2400;
constexpr int32_t kErrorInvalidParameterType = -2405;
constexpr int32_t kErrorUnzipFailed = -2405;
constexpr int32_t kErrorCreateUpdateProcessFailed = -2407;
constexpr int32_t kErrorUserSidEmpty = -2408;

}  // namespace vsm

#endif  // VSM_CORE_ERROR_TEXTS_H_
