// The operations of `vsmkit image OP IN.bmp [OUT.bmp] ARG...`, as tables of rows that several
// files contribute. Each file exposes its rows as one ImageOpList; image_command.cc names every
// list once, in the order help shows them.
#ifndef VSM_TOOLS_VSMKIT_IMAGE_OPS_H_
#define VSM_TOOLS_VSMKIT_IMAGE_OPS_H_

#include <cstddef>

#include "image/image.h"
#include "kit_command.h"

namespace vsmkit {

struct ImageOp {
  const char* name;
  // The arguments behind the file names, as help shows them ("W H METHOD").
  const char* arguments;
  // Whether OUT.bmp follows IN.bmp: the image is written there when the operation succeeds.
  bool writesImage;
  // How many arguments `run` takes.
  size_t least, most;
  // Runs on the image read from IN.bmp with the arguments behind the file names. False when the
  // kit refused the operation: vsmkit then prints GetErrorText on standard error, writes no
  // file and exits 1. An operation that prints its result writes it to standard output itself.
  // Unreadable arguments throw UsageError.
  bool (*run)(vsm::CImage& image, const Arguments& arguments);
};

struct ImageOpList {
  const ImageOp* ops;
  size_t count;
};

// Block handling, depth, colour reduction, sampling and scaling.
ImageOpList CoreImageOps();
// Flips, turns, rotation, crops, extension, pasting, and the normalised block.
ImageOpList GeometryImageOps();
// Threshold, grey, negative, tables, filtering, fills, blends, boxes and the measures.
ImageOpList ToneImageOps();

}  // namespace vsmkit

#endif  // VSM_TOOLS_VSMKIT_IMAGE_OPS_H_
