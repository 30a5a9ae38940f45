// The subcommands vsmkit knows, one per kit that no export reaches. Each lives in a file of its
// own (bigint_command.cc, ...) and is listed once in vsmkit.cc.
#ifndef VSM_TOOLS_VSMKIT_SUBCOMMANDS_H_
#define VSM_TOOLS_VSMKIT_SUBCOMMANDS_H_

#include "kit_command.h"

namespace vsmkit {

extern const char kZlibUsage[];
int RunZlib(const Arguments& arguments);
extern const char kUnzipUsage[];
int RunUnzip(const Arguments& arguments);
extern const char kUrlUsage[];
int RunUrl(const Arguments& arguments);

// vsmkit image OP IN.bmp [OUT.bmp] ARG...: one operation of the image kit on a BMP file.
int RunImage(const Arguments& arguments);
const char* ImageUsage();

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_SUBCOMMANDS_H_
