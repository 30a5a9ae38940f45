#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "core/virtual_manager_client.h"

namespace vsm {
namespace {

constexpr char kSet[] = "/SetEncryptedImageMap?GUID=";
constexpr char kGet[] = "/GetEncryptedImageMap?GUID=";

class ImageMapTest : public ::testing::Test {
 protected:
  void TearDown() override { VirtualManagerClient::DestroyInstance(); }
  VirtualManagerClient* client_ = VirtualManagerClient::GetInstance();
};

TEST(ExtractGuid, TakesEverythingBehindTheKey) {
  struct Row {
    const char* url;
    const char* route;
    std::string guid;
  } rows[] = {
      {"/GetEncryptedImageMap?GUID=abc", "/GetEncryptedImageMap?", "abc"},
      {"/GetEncryptedImageMap?GUID=abc&x=1", "/GetEncryptedImageMap?", "abc&x=1"},
      {"/GetEncryptedImageMap?GUID=", "/GetEncryptedImageMap?", ""},
      {"/GetEncryptedImageMap?guid=abc", "/GetEncryptedImageMap?", ""},
      {"/GetEncryptedImageMap?GUID=abc", "/SetEncryptedImageMap?", ""},
      {"/x?GUID=a/GetEncryptedImageMap?", "/GetEncryptedImageMap?", "a/GetEncryptedImageMap?"},
      {"", "/GetEncryptedImageMap?", ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(VirtualManagerClient::ExtractGuid(row.url, row.route), row.guid) << row.url;
  }
  EXPECT_THROW(VirtualManagerClient::ExtractGuid(nullptr, "/x"), std::logic_error);
}

TEST_F(ImageMapTest, ShortRecordsComeBackZeroPadded) {
  const std::string url = "0d4f-guid";
  EXPECT_EQ(client_->SetImage((kSet + url).c_str(), "12345", 5), 1);
  std::vector<char> out(2052, 'x');
  uint32_t length = 0;
  EXPECT_EQ(client_->GetImage((kGet + url).c_str(), out.data(), &length), 1);
  EXPECT_EQ(length, 2052u);
  EXPECT_EQ(std::string(out.data(), 5), "12345");
  EXPECT_EQ(std::vector<char>(out.begin() + 5, out.end()), std::vector<char>(2047, '\0'));
}

TEST_F(ImageMapTest, RecordsOfEverySizeUpToTheLimit) {
  for (uint32_t size : {0u, 1u, 1024u, 2051u, 2052u}) {
    std::vector<char> record(size + 1, 'r');  // never empty: a null record removes instead
    std::string key = "k" + std::to_string(size);
    ASSERT_EQ(client_->SetImage((kSet + key).c_str(), record.data(), size), 1);
    std::vector<char> out(2052, 'x');
    uint32_t length = 0;
    ASSERT_EQ(client_->GetImage((kGet + key).c_str(), out.data(), &length), 1);
    EXPECT_EQ(std::count(out.begin(), out.end(), 'r'), static_cast<long>(size));
    EXPECT_EQ(std::count(out.begin(), out.end(), '\0'), static_cast<long>(2052 - size));
  }
}

TEST_F(ImageMapTest, ANullOutAsksForTheLengthOnly) {
  client_->SetImage((std::string(kSet) + "g").c_str(), "a", 1);
  uint32_t length = 0;
  EXPECT_EQ(client_->GetImage((std::string(kGet) + "g").c_str(), nullptr, &length), 1);
  EXPECT_EQ(length, 2052u);
}

TEST_F(ImageMapTest, MissingKeysLeaveTheLengthAlone) {
  uint32_t length = 77;
  EXPECT_EQ(client_->GetImage((std::string(kGet) + "none").c_str(), nullptr, &length), 0);
  EXPECT_EQ(client_->GetImage(kGet, nullptr, &length), 0);
  EXPECT_EQ(client_->GetImage("/GetEncryptedImageMap?x=1", nullptr, &length), 0);
  EXPECT_EQ(length, 77u);
}

TEST_F(ImageMapTest, SetImageWithNullDataRemoves) {
  EXPECT_EQ(client_->SetImage("/SetEncryptedImageMap?x=1", nullptr, 0), 0);
  EXPECT_EQ(client_->SetImage((std::string(kSet) + "unknown").c_str(), nullptr, 0), 1);
  client_->SetImage((std::string(kSet) + "g").c_str(), "a", 1);
  EXPECT_EQ(client_->SetImage((std::string(kSet) + "g").c_str(), nullptr, 0), 1);
  uint32_t length = 0;
  EXPECT_EQ(client_->GetImage((std::string(kGet) + "g").c_str(), nullptr, &length), 0);
}

TEST_F(ImageMapTest, TheRouteTextMustMatchTheOperation) {
  EXPECT_EQ(client_->SetImage((std::string(kGet) + "g").c_str(), "a", 1), 0);
  client_->SetImage((std::string(kSet) + "g").c_str(), "a", 1);
  uint32_t length = 0;
  EXPECT_EQ(client_->GetImage((std::string(kSet) + "g").c_str(), nullptr, &length), 0);
  // The query text behind the GUID is part of the key.
  EXPECT_EQ(client_->GetImage((std::string(kGet) + "g&v=2").c_str(), nullptr, &length), 0);
}

TEST_F(ImageMapTest, ARecordOverTheLimitEndsTheProcess) {
  std::vector<char> record(2053, 'r');
  EXPECT_DEATH(client_->SetImage((std::string(kSet) + "g").c_str(), record.data(), 2053),
               "copied block of 2053 bytes overflows a buffer of 2052 bytes");
}

TEST_F(ImageMapTest, WhiteListNormalisesBackslashesOnly) {
  client_->AddFileToWhiteList("C:\\Users\\a.txt");
  client_->AddFileToWhiteList("C:\\Users\\a.txt");
  EXPECT_EQ(client_->IsFileInWhiteList("C:/Users/a.txt"), 1);
  EXPECT_EQ(client_->IsFileInWhiteList("C:\\Users\\a.txt"), 1);
  EXPECT_EQ(client_->IsFileInWhiteList("c:/users/a.txt"), 0);
  client_->AddFileToWhiteList("/tmp/b");
  EXPECT_EQ(client_->IsFileInWhiteList("\\tmp\\b"), 1);
}

TEST_F(ImageMapTest, ReservedAnswersForTheWhiteList) {
  char listed[] = "fileInQPTWhiteList";
  char add[] = "addFileToWhiteList";
  char addLonger[] = "addFileToWhiteListPlus";
  char listedLonger[] = "fileInQPTWhiteListX";
  char other[] = "somethingElseEntirely";
  char shortText[] = "file";
  int dummy = 0;
  EXPECT_EQ(client_->Reserved(listed, "/p", nullptr), -1);
  EXPECT_EQ(client_->Reserved(add, "/p", nullptr), 0);
  EXPECT_EQ(client_->Reserved(listed, "/p", nullptr), 0);
  EXPECT_EQ(client_->Reserved(listedLonger, "\\p", nullptr), 0);
  EXPECT_EQ(client_->Reserved(addLonger, "/q", nullptr), 0);
  EXPECT_EQ(client_->Reserved(listed, "/q", nullptr), 0);
  EXPECT_EQ(client_->Reserved(other, "/p", nullptr), -1);
  EXPECT_EQ(client_->Reserved(shortText, "/p", nullptr), -1);
  EXPECT_EQ(client_->Reserved(listed, nullptr, nullptr), -1);
  EXPECT_EQ(client_->Reserved(nullptr, "/p", nullptr), -1);
  EXPECT_EQ(client_->Reserved(listed, "/p", &dummy), -1);
  EXPECT_EQ(client_->Reserved(add, "/r", &dummy), -1);
  EXPECT_EQ(client_->IsFileInWhiteList("/r"), 0);
}

}  // namespace
}  // namespace vsm
