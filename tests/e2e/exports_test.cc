// The ten exports, called through dlopen as a host calls them.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "e2e/harness/host_harness.h"

namespace vsm::e2e {
namespace {

TEST(Exports, OnlyTheTenFunctionsAreExported) {
  FILE* listing = popen("nm -D --defined-only " VSM_LIBRARY_PATH, "r");
  ASSERT_NE(listing, nullptr);
  std::set<std::string> exported;
  char type[8], name[512];
  while (fscanf(listing, "%*s %7s %511s", type, name) == 2) exported.insert(name);
  pclose(listing);
  EXPECT_EQ(exported, (std::set<std::string>{"CloseWebSocket", "DistributeCommand", "DoAction",
                                             "GetAlias", "GetImage", "GetPorts", "GetVersionDesc",
                                             "GetWaitTimeout", "Reserved", "SetImage"}));
}

TEST(Exports, ConstantsAndActions) {
  const Library& library = LoadLibrary();
  std::string alias(5, 'x'), version(17, 'x');
  EXPECT_EQ(library.GetAlias(nullptr), 4);
  EXPECT_EQ(library.GetAlias(alias.data()), 4);
  EXPECT_EQ(alias, std::string("vsm\0x", 5));
  EXPECT_EQ(library.GetVersionDesc(nullptr), 16);
  EXPECT_EQ(library.GetVersionDesc(version.data()), 16);
  EXPECT_EQ(version, std::string("qwasm2_16261212\0x", 17));
  unsigned port = 0;
  EXPECT_EQ(library.GetPorts(0, &port), 1);
  EXPECT_EQ(port, 18625u);
  EXPECT_EQ(library.GetPorts(1, &port), 1);
  EXPECT_EQ(port, 18626u);
  EXPECT_EQ(library.GetPorts(0, nullptr), 1);
  const int results[] = {1, 0, 1, 1, 1, 0, 0};  // actions 0 to 6; 3 tears down, 4 starts too
  for (unsigned action = 0; action < 7; ++action) {
    EXPECT_EQ(library.DoAction(action, "/x/y", "z", 3), results[action]) << action;
  }
  library.CloseWebSocket(0xFFFFFFFFu);
  EXPECT_EQ(library.GetWaitTimeout(), 1);
}

// The store's behaviour is pinned by the unit tests and the eight-thread host test; here only
// the record size the host and the module agree on.
TEST(Exports, ARecordOverTheAgreedSizeEndsTheProcess) {
  std::vector<char> tooLong(2053, 'r');
  EXPECT_DEATH(LoadLibrary().SetImage("/SetEncryptedImageMap?GUID=g", tooLong.data(), 2053),
               "copied block of 2053 bytes overflows a buffer of 2052 bytes");
}

}  // namespace
}  // namespace vsm::e2e
