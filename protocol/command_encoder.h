// The answer texts of commands and events.
//
// EncodeCommandResult writes the object {"description", "event" | "method", "exception", "id",
// "result"} in the styled layout: "exception" (and with it "description") only for a non-zero
// code, "event" instead of "method" when `isEvent`, "result" only when `results` holds a value.
// EncodeSessionResult is the session-and-object form: "description" ("Successful" for code 0),
// "event" | "method", "exception" (always), "object", "result", "session".
// The results are copied; the list stays as it is. A null entry in the list (a parameter that
// could not be read as an argument) is written as null. Thread-safe.
#ifndef VSM_PROTOCOL_COMMAND_ENCODER_H_
#define VSM_PROTOCOL_COMMAND_ENCODER_H_

#include <json/value.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vsm {

using ResultList = std::vector<Json::Value*>;

std::string EncodeCommandResult(const std::string& id, const std::string& name,
                                const ResultList& results, bool isEvent, int32_t exception,
                                const std::string& description);

std::string EncodeSessionResult(const std::string& session, const std::string& object,
                                const std::string& name, const ResultList& results, bool isEvent,
                                int32_t exception, const std::string& description);

}  // namespace vsm

#endif  // VSM_PROTOCOL_COMMAND_ENCODER_H_
