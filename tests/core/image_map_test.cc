#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "core/virtual_manager_client.h"

namespace vsm {
namespace {

const std::string kSet = "/SetEncryptedImageMap?GUID=";
const std::string kGet = "/GetEncryptedImageMap?GUID=";

class ImageMapTest : public ::testing::Test {
 protected:
  void TearDown() override { VirtualManagerClient::DestroyInstance(); }
  int Get(const std::string& url, std::vector<char>* out, uint32_t* length) {
    return client_->GetImage(url.c_str(), out ? out->data() : nullptr, length);
  }
  VirtualManagerClient* client_ = VirtualManagerClient::GetInstance();
};

TEST(ExtractGuid, TakesEverythingBehindTheKeyWhenTheRouteIsThere) {
  const char* rows[][3] = {
      {"/GetEncryptedImageMap?GUID=abc&x=1", "/GetEncryptedImageMap?", "abc&x=1"},
      {"/GetEncryptedImageMap?GUID=", "/GetEncryptedImageMap?", ""},
      {"/GetEncryptedImageMap?guid=abc", "/GetEncryptedImageMap?", ""},
      {"/GetEncryptedImageMap?GUID=abc", "/SetEncryptedImageMap?", ""},
      {"/x?GUID=a/GetEncryptedImageMap?", "/GetEncryptedImageMap?", "a/GetEncryptedImageMap?"}};
  for (const auto& row : rows) EXPECT_EQ(VirtualManagerClient::ExtractGuid(row[0], row[1]), row[2]);
  EXPECT_THROW(VirtualManagerClient::ExtractGuid(nullptr, "/x"), std::logic_error);
}

TEST_F(ImageMapTest, RecordsOfEverySizeComeBackZeroPadded) {
  for (uint32_t size : {0u, 5u, 2051u, 2052u}) {
    std::vector<char> record(size + 1, 'r'), out(2052, 'x');  // never empty: null removes
    const std::string key = "k" + std::to_string(size);
    ASSERT_EQ(client_->SetImage((kSet + key).c_str(), record.data(), size), 1);
    uint32_t length = 0;
    ASSERT_EQ(Get(kGet + key, &out, &length), 1);
    EXPECT_EQ(length, 2052u);
    EXPECT_EQ(std::count(out.begin(), out.begin() + size, 'r'), static_cast<long>(size));
    EXPECT_EQ(std::count(out.begin() + size, out.end(), '\0'), static_cast<long>(2052 - size));
  }
  uint32_t length = 0;
  EXPECT_EQ(Get(kGet + "k5", nullptr, &length), 1);  // a null out asks for the length only
  EXPECT_EQ(length, 2052u);
  EXPECT_EQ(client_->GetImage((kGet + "k5").c_str(), nullptr, nullptr), 1);
}

TEST_F(ImageMapTest, KeysAndRemoval) {
  uint32_t length = 77;
  client_->SetImage((kSet + "g").c_str(), "a", 1);
  EXPECT_EQ(Get(kGet + "none", nullptr, &length), 0);
  EXPECT_EQ(Get(kGet, nullptr, &length), 0);
  EXPECT_EQ(Get(kSet + "g", nullptr, &length), 0);      // the route must name the operation
  EXPECT_EQ(Get(kGet + "g&v=2", nullptr, &length), 0);  // query text is part of the key
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(client_->SetImage((kGet + "g").c_str(), "a", 1), 0);
  EXPECT_EQ(client_->SetImage("/SetEncryptedImageMap?x=1", nullptr, 0), 0);
  EXPECT_EQ(client_->SetImage((kSet + "unknown").c_str(), nullptr, 0), 1);
  EXPECT_EQ(client_->SetImage((kSet + "g").c_str(), nullptr, 0), 1);
  EXPECT_EQ(Get(kGet + "g", nullptr, &length), 0);
}

TEST_F(ImageMapTest, ReservedKeepsTheWhiteList) {
  char listed[] = "fileInQPTWhiteList", add[] = "addFileToWhiteList";
  char listedLonger[] = "fileInQPTWhiteListX", addLonger[] = "addFileToWhiteListPlus";
  char other[] = "somethingElseEntirely", shortText[] = "file";
  int dummy = 0;
  struct Row {
    char* subCommand;
    const char* argument;
    const void* mustBeNull;
    int result;
  } rows[] = {{listed, "C:\\Users\\a.txt", nullptr, -1},
              {add, "C:\\Users\\a.txt", nullptr, 0},
              {add, "C:\\Users\\a.txt", nullptr, 0},
              {listed, "C:/Users/a.txt", nullptr, 0},
              {listedLonger, "C:\\Users\\a.txt", nullptr, 0},
              {listed, "c:/users/a.txt", nullptr, -1},
              {addLonger, "/q", nullptr, 0},
              {listed, "\\q", nullptr, 0},
              {other, "/q", nullptr, -1},
              {shortText, "/q", nullptr, -1},
              {listed, nullptr, nullptr, -1},
              {nullptr, "/q", nullptr, -1},
              {add, "/r", &dummy, -1},
              {listed, "/r", nullptr, -1}};
  for (const Row& row : rows) {
    EXPECT_EQ(client_->Reserved(row.subCommand, row.argument, row.mustBeNull), row.result)
        << (row.subCommand ? row.subCommand : "null") << " " << (row.argument ? row.argument : "");
  }
}

}  // namespace
}  // namespace vsm
