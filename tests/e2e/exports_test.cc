// The ten exports, called through dlopen as a host calls them.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
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
  char line[1024];
  while (fgets(line, sizeof(line), listing) != nullptr) {
    std::string text(line);
    size_t last = text.find_last_of(' ');
    if (last == std::string::npos) continue;
    std::string name = text.substr(last + 1);
    name.erase(name.find_last_not_of("\n") + 1);
    exported.insert(name);
  }
  pclose(listing);
  EXPECT_EQ(exported, (std::set<std::string>{"CloseWebSocket", "DistributeCommand", "DoAction",
                                             "GetAlias", "GetImage", "GetPorts", "GetVersionDesc",
                                             "GetWaitTimeout", "Reserved", "SetImage"}));
}

TEST(Exports, ConstantsAnswerBeforeStartUp) {
  const Library& library = LoadLibrary();
  char alias[8];
  std::memset(alias, 'x', sizeof(alias));
  EXPECT_EQ(library.GetAlias(nullptr), 4);
  EXPECT_EQ(library.GetAlias(alias), 4);
  EXPECT_EQ(std::string(alias, 5), std::string("vsm\0x", 5));
  std::vector<char> version(32, 'x');
  EXPECT_EQ(library.GetVersionDesc(nullptr), 16);
  EXPECT_EQ(library.GetVersionDesc(version.data()), 16);
  EXPECT_EQ(std::string(version.data(), 17), std::string("qwasm2_16261212\0x", 17));
  unsigned port = 0;
  EXPECT_EQ(library.GetPorts(0, &port), 1);
  EXPECT_EQ(port, 18625u);
  EXPECT_EQ(library.GetPorts(1, &port), 1);
  EXPECT_EQ(port, 18626u);
  EXPECT_EQ(library.GetPorts(0, nullptr), 1);
}

TEST(Exports, DoActionResults) {
  const Library& library = LoadLibrary();
  EXPECT_EQ(library.DoAction(1, nullptr, nullptr, 0), 0);
  EXPECT_EQ(library.DoAction(5, nullptr, nullptr, 0), 0);
  EXPECT_EQ(library.DoAction(2, nullptr, nullptr, 0), 1);
  EXPECT_EQ(library.DoAction(3, nullptr, nullptr, 0), 1);  // no singleton yet
  EXPECT_EQ(library.DoAction(0, "/x/y", "z", 3), 1);
  EXPECT_EQ(library.DoAction(4, nullptr, nullptr, 3), 1);
  EXPECT_EQ(library.GetWaitTimeout(), 1);
  library.CloseWebSocket(0);
  library.CloseWebSocket(0xFFFFFFFFu);
  EXPECT_EQ(library.DoAction(3, nullptr, nullptr, 0), 1);
}

TEST(Exports, TheStoreKeepsRecordsAndPaths) {
  const Library& library = LoadLibrary();
  ASSERT_EQ(library.DoAction(0, nullptr, nullptr, 0), 1);
  EXPECT_EQ(library.SetImage("/SetEncryptedImageMap?GUID=abc", "12345", 5), 1);
  std::vector<char> record(2052, 'x');
  unsigned length = 0;
  EXPECT_EQ(library.GetImage("/GetEncryptedImageMap?GUID=abc", record.data(), &length), 1);
  EXPECT_EQ(length, 2052u);
  EXPECT_EQ(std::string(record.data(), 6), std::string("12345\0", 6));
  EXPECT_EQ(library.GetImage("/GetEncryptedImageMap?GUID=", nullptr, &length), 0);
  EXPECT_EQ(library.Reserved("addFileToWhiteList", "C:\\a\\b.txt", nullptr), 0);
  EXPECT_EQ(library.Reserved("fileInQPTWhiteList", "C:/a/b.txt", nullptr), 0);
  EXPECT_EQ(library.Reserved("fileInQPTWhiteList", "C:/a/B.txt", nullptr), -1);
  EXPECT_EQ(library.Reserved("unknownSubCommand!", "C:/a/b.txt", nullptr), -1);
  // Tear-down empties the store.
  EXPECT_EQ(library.DoAction(3, nullptr, nullptr, 0), 1);
  EXPECT_EQ(library.GetImage("/GetEncryptedImageMap?GUID=abc", nullptr, &length), 0);
  EXPECT_EQ(library.Reserved("fileInQPTWhiteList", "C:/a/b.txt", nullptr), -1);
}

TEST(Exports, ARecordOverTheLimitEndsTheProcess) {
  std::vector<char> record(2053, 'r');
  EXPECT_DEATH(LoadLibrary().SetImage("/SetEncryptedImageMap?GUID=g", record.data(), 2053),
               "copied block of 2053 bytes overflows a buffer of 2052 bytes");
}

}  // namespace
}  // namespace vsm::e2e
