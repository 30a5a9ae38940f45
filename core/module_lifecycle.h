// The lifecycle of the module as the host drives it through DoAction, and the texts the
// constant exports answer with.
//
// Start-up (actions 0 and 4) runs the working-path set-up first and stores DoAction's
// arguments only afterwards, so none of them can influence it: the second text is kept in a
// process-wide value, the first replaces the program path, and the instance number goes into
// the names of events and semaphores. Start-up and tear-down must not overlap commands; the
// host's order guarantees that. Nothing here locks except DestroyInstance.
#ifndef VSM_CORE_MODULE_LIFECYCLE_H_
#define VSM_CORE_MODULE_LIFECYCLE_H_

#include <string>

namespace vsm {

// 0: start-up, result 1. 1: nothing, 0. 2: nothing, 1. 3: delete the singleton, 1. 4: work
// mode 3, then start-up, 1. 5 and above: nothing, 0.
int RunAction(unsigned int action, const char* firstText, const char* secondText,
              unsigned int instanceNumber);

// The kept texts. The first is the program path (start-up stores the program's own path,
// DoAction may replace it); nothing in the module reads either back.
std::string GetFirstActionText();
std::string GetSecondActionText();

// "qwasm2_" and the module version with its commas and blanks removed: "qwasm2_16261212".
std::string BuildVersionDescription();

}  // namespace vsm

#endif  // VSM_CORE_MODULE_LIFECYCLE_H_
