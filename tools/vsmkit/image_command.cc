// vsmkit image: reads a BMP file, runs one operation of the image kit on it, and writes the
// result as a BMP file or prints it.
#include <cstdio>
#include <string>
#include <vector>

#include "bmp_file.h"
#include "image_ops.h"
#include "subcommands.h"

namespace vsmkit {

namespace {

// Every list of OPs, in the order help shows them. A file with further OPs adds its list here.
ImageOpList (*const kOpLists[])() = {CoreImageOps, GeometryImageOps, ToneImageOps};

const ImageOp* FindOp(const std::string& name) {
  for (auto list : kOpLists) {
    const ImageOpList ops = list();
    for (size_t i = 0; i < ops.count; ++i) {
      if (name == ops.ops[i].name) return &ops.ops[i];
    }
  }
  return nullptr;
}

}  // namespace

const char* ImageUsage() {
  static const std::string usage = [] {
    std::string text;
    for (auto list : kOpLists) {
      const ImageOpList ops = list();
      for (size_t i = 0; i < ops.count; ++i) {
        const ImageOp& op = ops.ops[i];
        text += std::string(text.empty() ? "" : "\n") + "vsmkit image " + op.name + " IN.bmp" +
                (op.writesImage ? " OUT.bmp" : "") + (op.arguments[0] != '\0' ? " " : "") +
                op.arguments;
      }
    }
    return text;
  }();
  return usage.c_str();
}

int RunImage(const Arguments& arguments) {
  if (arguments.empty()) throw UsageError("no OP");
  const ImageOp* op = FindOp(arguments[0]);
  if (op == nullptr) throw UsageError("unknown OP: " + arguments[0]);
  const size_t files = op->writesImage ? 2 : 1;
  ExpectCount(arguments, 1 + files + op->least, 1 + files + op->most);
  vsm::CImage image;
  LoadBmpImage(arguments[1], image);
  const Arguments rest(arguments.begin() + 1 + files, arguments.end());
  if (!op->run(image, rest)) {
    char text[64];
    throw OperationFailed(image.GetErrorText(text));
  }
  if (op->writesImage) {
    const vsm::ImageInfo& info = *image.GetInfo();
    WriteBmpFile(arguments[2], info.dib, info.dibSize, info.headerSize + 4 * info.colorsUsed);
  }
  return 0;
}

}  // namespace vsmkit
