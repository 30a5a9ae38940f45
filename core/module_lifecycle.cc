#include "core/module_lifecycle.h"

#include <cstdio>
#include <mutex>

#include "config/module_identity.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/virtual_manager_client.h"
#include "support/c_string.h"
#include "support/event.h"

namespace vsm {

namespace {

std::mutex secondTextMutex;
std::string secondText;

void StartModule(const char* firstText, const char* second, unsigned int instanceNumber) {
  InitializeWorkingPaths(true);
  if (second != nullptr) {
    std::lock_guard<std::mutex> hold(secondTextMutex);
    secondText = second;
  }
  SetProgramPath(firstText);
  SetEventNameInstance(static_cast<int32_t>(instanceNumber));
}

}  // namespace

int RunAction(unsigned int action, const char* firstText, const char* secondText,
              unsigned int instanceNumber) {
  switch (action) {
    case 0:
      StartModule(firstText, secondText, instanceNumber);
      return 1;
    case 2:
      return 1;
    case 3:
      VirtualManagerClient::DestroyInstance();
      return 1;
    case 4:
      SetWorkMode(3);
      StartModule(firstText, secondText, instanceNumber);
      return 1;
    default:
      return 0;
  }
}

std::string GetFirstActionText() { return GetProgramPath(); }

std::string GetSecondActionText() {
  std::lock_guard<std::mutex> hold(secondTextMutex);
  return secondText;
}

std::string BuildVersionDescription() {
  char version[1024] = {0};
  SafeStringCopy(version, kModuleVersion, sizeof(version));
  RemoveChar(version, ',');
  RemoveChar(version, ' ');
  char description[1024] = {0};
  std::snprintf(description, sizeof(description), "qwasm2_%s", version);
  return description;
}

}  // namespace vsm
