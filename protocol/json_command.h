// JsonCommand: one command text, parsed, with typed access to the members the protocol knows.
//
// A command is a JSON object with "id", "cmdId", "method" | "property" | "event", "version"
// and "parameter" (an array of positional arguments); other members are ignored. Every accessor
// behaves as for a missing member when the text did not parse. Texts are read strictly: a
// string gives its text, a boolean "true"/"false", anything else (numbers included) "".
// The kind is decided by the first of "event", "method", "property" in ascending byte order of
// the member names, so "event" wins over "method", and "method" over "property".
// A root that parsed but is not an object is a command of kind None with no members.
// Not thread-safe; one command belongs to one thread.
#ifndef VSM_PROTOCOL_JSON_COMMAND_H_
#define VSM_PROTOCOL_JSON_COMMAND_H_

#include <json/value.h>

#include <string>

namespace vsm {

enum CommandKind : unsigned {
  kCommandMethod = 0,
  kCommandProperty = 1,
  kCommandEvent = 2,
  kCommandNone = 3,
};

// The numbering is the protocol's own; 2 stays free.
enum ParameterType : unsigned {
  kParameterNull = 0,
  kParameterBool = 1,
  kParameterInt = 3,
  kParameterUInt = 4,
  kParameterReal = 5,
  kParameterString = 6,
  kParameterArray = 7,
  kParameterObject = 8,
  kParameterInvalid = 9,
};

class JsonCommand {
 public:
  explicit JsonCommand(const std::string& text);
  virtual ~JsonCommand() = default;
  JsonCommand(const JsonCommand&) = delete;
  JsonCommand& operator=(const JsonCommand&) = delete;

  // Replaces the text and parses it again.
  void Reparse(const std::string& text);

  bool IsValid() const { return valid_; }
  const std::string& GetText() const { return text_; }

  // True when the parsed root has a member with exactly this name (same length, same bytes).
  bool HasMember(const std::string& key) const;
  std::string GetMemberString(const std::string& key) const;
  // A new copy of the member, owned by the caller; null when the member is missing.
  Json::Value* GetMemberValue(const std::string& key) const;

  std::string GetId() const { return GetMemberString("id"); }
  std::string GetCmdId() const { return GetMemberString("cmdId"); }
  std::string GetVersion() const { return GetMemberString("version"); }
  CommandKind GetKind() const;
  // The text of the member that set the kind; "" for None.
  std::string GetName() const;
  // "set" when "property" and "parameter" are both present, "get" with "property" alone, else
  // "". Presence only, whatever the kind.
  std::string GetPropertyAccess() const;

  // size() of "parameter": its element count for an array, its member count for an object,
  // 0 for anything else or when absent.
  int GetParameterCount() const;
  ParameterType GetParameterType(int index) const;
  // A new copy of the argument, owned by the caller; null when its type is Invalid (which is
  // every index of a "parameter" that is not an array).
  Json::Value* GetParameter(int index) const;
  // The same value as GetParameter gives, but moved out of the parsed document rather than
  // copied, which leaves a null in its place there: for a caller that takes each argument once
  // and then drops the command.
  Json::Value* TakeParameter(int index);

 private:
  const Json::Value* Member(const std::string& key) const;

  std::string text_;
  Json::Value root_;
  bool valid_ = false;
  const Json::Value* parameter_ = nullptr;  // the "parameter" member, looked up once
};

}  // namespace vsm

#endif  // VSM_PROTOCOL_JSON_COMMAND_H_
