// vsmkit unzip: CUnzipper::Extract of one archive into one folder. Like Extract, it changes its
// own working directory to the folder.
#include "kit_command.h"
#include "subcommands.h"
#include "support/unzipper.h"

namespace vsmkit {

const char kUnzipUsage[] =
    "vsmkit unzip ZIP FOLDER         extract ZIP (or ZIP.zip) into the existing FOLDER";

int RunUnzip(const Arguments& arguments) {
  ExpectCount(arguments, 2);
  vsm::CUnzipper unzipper;
  if (!unzipper.Extract(arguments[0].c_str(), arguments[1].c_str())) {
    throw OperationFailed(unzipper.GetMessage());
  }
  return 0;
}

}  // namespace vsmkit
