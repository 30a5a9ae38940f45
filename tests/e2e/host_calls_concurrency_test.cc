// Eight host threads calling into the built library at once for a few seconds: commands, image
// records and white-list queries, with every answer checked.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "e2e/harness/host_harness.h"

namespace vsm::e2e {
namespace {

std::string ChangePortAnswer(const std::string& id, const std::string& parameter) {
  return "{\n   \"id\" : \"" + id + "\",\n   \"method\" : \"ChangePort\",\n   \"result\" : [ \"" +
         parameter + "\", true ],\n\t\"cmdId\" : \"" + id + "\"\n}\n";
}

void HostThread(int number, std::chrono::steady_clock::time_point end, std::atomic<int>* failures,
                std::atomic<long>* calls) {
  const Library& library = LoadLibrary();
  const std::string guid = "thread-" + std::to_string(number);
  const std::string path = "C:\\thread\\" + std::to_string(number);
  for (long round = 0; std::chrono::steady_clock::now() < end; ++round) {
    const std::string id = std::to_string(number) + "-" + std::to_string(round);
    bool ok = true;
    switch (round % 5) {
      case 0:
        ok = Send("{\"id\":\"" + id + "\",\"cmdId\":\"" + id +
                  "\",\"method\":\"ChangePort\",\"parameter\":[\"" + guid + "\"]}")
                 .Text() == ChangePortAnswer(id, guid);
        break;
      case 1:
        ok = Send("{\"id\":\"1\",\"cmdId\":\"1\",\"method\":\"VersionInfo\"}").Text() ==
             "{\n   \"event\" : \"VersionInfo\",\n   \"id\" : \"1\",\n   \"result\" : [\n"
             "      \"16, 2, 6, 1212\",\n      \"Veldorane Service Manager Module\",\n"
             "      \"0\",\n      \"false\",\n      \"32\"\n   ],\n\t\"cmdId\" : \"1\"\n}\n";
        break;
      case 2: {
        std::string record = id;
        ok = library.SetImage(("/SetEncryptedImageMap?GUID=" + guid).c_str(), record.data(),
                              static_cast<unsigned>(record.size())) == 1;
        std::vector<char> out(2052, 'x');
        unsigned length = 0;
        ok = ok && library.GetImage(("/GetEncryptedImageMap?GUID=" + guid).c_str(), out.data(),
                                    &length) == 1;
        ok = ok && length == 2052 && std::string(out.data()) == record;
        break;
      }
      case 3:
        ok = library.Reserved("addFileToWhiteList", path.c_str(), nullptr) == 0 &&
             library.Reserved("fileInQPTWhiteList", path.c_str(), nullptr) == 0 &&
             library.GetWaitTimeout() == 1;
        break;
      default:  // GetPorts writes the shared user map; the refusal must stay whole
        ok = Send("{\"id\":\"x\",\"method\":\"GetLocalIP\"}").Text() == "[]" &&
             Send("{\"id\":\"x\",\"method\":\"GetPorts\",\"parameter\":[\"" + id + "\"]}")
                     .Text()
                     .find("\"description\" : \"User SID is empty.\",\n   \"exception\" : -2408") !=
                 std::string::npos;
        break;
    }
    if (!ok) failures->fetch_add(1);
    calls->fetch_add(1);
  }
}

TEST(HostCallsConcurrency, EightThreadsGetTheirOwnAnswers) {
  ASSERT_EQ(LoadLibrary().DoAction(0, nullptr, nullptr, 0), 1);
  std::atomic<int> failures{0};
  std::atomic<long> calls{0};
  auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back(HostThread, number, end, &failures, &calls);
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_GT(calls.load(), 80);
  EXPECT_EQ(LoadLibrary().DoAction(3, nullptr, nullptr, 0), 1);
}

}  // namespace
}  // namespace vsm::e2e
