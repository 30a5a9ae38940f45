// An image that records the progress its operations report and can cancel at a given report,
// for the progress and cancel tables of the image tests.
#ifndef VSM_TESTS_IMAGE_WATCHED_IMAGE_H_
#define VSM_TESTS_IMAGE_WATCHED_IMAGE_H_

#include <string>

#include "image/image.h"

namespace vsm {

class WatchedImage : public CImage {
 public:
  void OnProgress(uint32_t percent) override {
    seen += std::to_string(percent) + " ";
    if (++calls == cancelAtCall) Cancel();
  }
  std::string seen;
  int calls = 0;
  int cancelAtCall = -1;
};

}  // namespace vsm

#endif  // VSM_TESTS_IMAGE_WATCHED_IMAGE_H_
