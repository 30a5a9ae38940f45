// vsmkit url: the URL translators. Prints the command text exactly as the translator returns it;
// a URL it can't translate prints nothing and exits 1.
#include "protocol/url_command_encoder.h"
#include "subcommands.h"

namespace vsmkit {

extern const char kUrlUsage[] =
    "vsmkit url method METHOD QUERY   the hand-built command for any method\n"
    "vsmkit url file PATH             the GetFile command\n"
    "vsmkit url thumbnail QUERY       GetImageByIndex with index and thumbnail flag\n"
    "vsmkit url image QUERY           GetImageByIndex with index, width, height, act, webcam";

int RunUrl(const Arguments& arguments) {
  ExpectCount(arguments, 2, 3);
  const std::string& form = arguments[0];
  const vsm::UrlCommandEncoder encoder;
  std::string command;
  if (form == "method") {
    ExpectCount(arguments, 3);
    command = encoder.EncodeMethodUrl(arguments[1], arguments[2]);
  } else {
    ExpectCount(arguments, 2);
    if (form == "file") {
      command = encoder.EncodeFileUrl(arguments[1]);
    } else if (form == "thumbnail") {
      command = encoder.EncodeThumbnailUrl(arguments[1]);
    } else if (form == "image") {
      command = encoder.EncodeImageUrl(arguments[1]);
    } else {
      throw UsageError("unknown form: " + form);
    }
  }
  if (command.empty()) return 1;
  WriteStandardOutput(command.data(), command.size());
  return 0;
}

}  // namespace vsmkit
