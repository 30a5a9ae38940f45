#include "support/library_loader.h"

#include <dlfcn.h>

#include "gtest/gtest.h"

namespace vsm {
namespace {

TEST(LibraryLoaderTest, LoadsFindsAndFreesLeavingNoErrorBehind) {
  void* library = LoadLibrary("libm.so.6");
  ASSERT_NE(library, nullptr);
  auto cosine = reinterpret_cast<double (*)(double)>(GetProcAddress(library, "cos"));
  ASSERT_NE(cosine, nullptr);
  EXPECT_EQ(cosine(0.0), 1.0);
  EXPECT_EQ(GetProcAddress(library, "no_such_symbol"), nullptr);
  EXPECT_EQ(LoadLibrary("/no/such/library.so"), nullptr);
  EXPECT_EQ(dlerror(), nullptr);
  EXPECT_EQ(FreeLibrary(library), 1);
  EXPECT_EQ(FreeLibrary(nullptr), 0);
  EXPECT_EQ(GetProcAddress(nullptr, "cos"), nullptr);
}

}  // namespace
}  // namespace vsm
