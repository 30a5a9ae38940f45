#include "protocol/json_command.h"

#include "protocol/json_reader.h"
#include "protocol/json_value_access.h"

namespace vsm {

JsonCommand::JsonCommand(const std::string& text) { Reparse(text); }

void JsonCommand::Reparse(const std::string& text) {
  text_ = text;
  valid_ = ParseJsonText(text_, &root_, false);
  parameter_ = Member("parameter");
}

const Json::Value* JsonCommand::Member(const std::string& key) const {
  if (!valid_) return nullptr;
  return FindMember(root_, key);
}

bool JsonCommand::HasMember(const std::string& key) const {
  if (!valid_) return false;
  for (const std::string& name : MemberNames(root_)) {
    if (name == key) return true;
  }
  return false;
}

std::string JsonCommand::GetMemberString(const std::string& key) const {
  const Json::Value* member = Member(key);
  return member ? StrictString(*member) : std::string();
}

Json::Value* JsonCommand::GetMemberValue(const std::string& key) const {
  const Json::Value* member = Member(key);
  return member ? new Json::Value(*member) : nullptr;
}

CommandKind JsonCommand::GetKind() const {
  if (!valid_) return kCommandNone;
  for (const std::string& name : MemberNames(root_)) {
    if (name == "method") return kCommandMethod;
    if (name == "property") return kCommandProperty;
    if (name == "event") return kCommandEvent;
  }
  return kCommandNone;
}

std::string JsonCommand::GetName() const {
  switch (GetKind()) {
    case kCommandMethod:
      return GetMemberString("method");
    case kCommandProperty:
      return GetMemberString("property");
    case kCommandEvent:
      return GetMemberString("event");
    default:
      return std::string();
  }
}

std::string JsonCommand::GetPropertyAccess() const {
  if (!HasMember("property")) return std::string();
  return HasMember("parameter") ? "set" : "get";
}

int JsonCommand::GetParameterCount() const {
  return parameter_ ? static_cast<int>(parameter_->size()) : 0;
}

ParameterType JsonCommand::GetParameterType(int index) const {
  if (parameter_ == nullptr || parameter_->size() == 0 || !IsArrayOrNull(*parameter_) ||
      index < 0 || static_cast<Json::ArrayIndex>(index) >= parameter_->size()) {
    return kParameterInvalid;
  }
  switch ((*parameter_)[static_cast<Json::ArrayIndex>(index)].type()) {
    case Json::nullValue:
      return kParameterNull;
    case Json::booleanValue:
      return kParameterBool;
    case Json::intValue:
      return kParameterInt;
    case Json::uintValue:
      return kParameterUInt;
    case Json::realValue:
      return kParameterReal;
    case Json::stringValue:
      return kParameterString;
    case Json::arrayValue:
      return kParameterArray;
    case Json::objectValue:
      return kParameterObject;
  }
  return kParameterInvalid;
}

Json::Value* JsonCommand::GetParameter(int index) const {
  if (GetParameterType(index) == kParameterInvalid) return nullptr;
  return new Json::Value((*parameter_)[static_cast<Json::ArrayIndex>(index)]);
}

Json::Value* JsonCommand::TakeParameter(int index) {
  if (GetParameterType(index) == kParameterInvalid) return nullptr;
  // Both exist (the type test found them), so the non-const operator[] adds nothing.
  Json::Value& element = root_["parameter"][static_cast<Json::ArrayIndex>(index)];
  auto* taken = new Json::Value();
  taken->swap(element);
  return taken;
}

}  // namespace vsm
