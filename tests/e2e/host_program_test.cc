// The library loaded by a host program that lives in a folder of its own (a copy of vsmctl in
// a temporary folder): start-up builds its tree and files there, and configuration writes are
// checked byte for byte in that folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "e2e/harness/host_harness.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm::e2e {
namespace {

using vsm::testing::PathExists;
using vsm::testing::ReadFileBytes;
using vsm::testing::TempDir;
using vsm::testing::WriteFileBytes;

constexpr char kGreeting[] =
    "alias: vsm (4)\nversion: qwasm2_16261212 (16)\nports: 18625 18626\nDoAction(0): 1\n";
constexpr char kFarewell[] = "wait timeout: 1\nDoAction(3): 1\n";

std::string Answer(const std::string& text, int result = 1) {
  return "--- answer (" + std::to_string(text.size()) + " bytes)\n" + text +
         (text.empty() || text.back() != '\n' ? "\n" : "") + "--- result " +
         std::to_string(result) + "\n";
}

unsigned ModeOf(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

TEST(HostProgram, StartUpBuildsTheWorkingTreeBesideTheProgram) {
  TempDir folder;
  WriteFileBytes(folder.Join("VSConfiguration.ini"), "[VS]\nLogLevel=14\n");
  int status = -1;
  std::string output = RunHost(folder.path(), {}, "", &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(output, std::string(kGreeting) + kFarewell);
  for (const char* directory : {"log", "cache", "upload", "dump"}) {
    EXPECT_TRUE(PathExists(folder.Join(directory))) << directory;
  }
  EXPECT_EQ(ModeOf(folder.Join("log")), 0777u);
  EXPECT_EQ(ModeOf(folder.Join("dump")), 0777u);
  EXPECT_FALSE(PathExists(folder.Join("cert")));
  std::string log = ReadFileBytes(folder.Join("log/vss.log"));
  EXPECT_EQ(testing::WithoutHeads(log),
            "H [Debug-0]: Version info:Veldorane Service Manager Module, vsm build 1212---16, 2, "
            "6, 1212, \r\n\t\tis64:1, isScanning=0, workMode=0, isQPTActiveX=0\r\n\n");
}

TEST(HostProgram, WithTheDefaultMaskNothingIsLogged) {
  TempDir folder;
  RunHost(folder.path(), {"{\"id\":\"1\",\"method\":\"Nope\"}"}, "");
  EXPECT_EQ(ReadFileBytes(folder.Join("log/vss.log")), "");
}

TEST(HostProgram, ServerInfoConversationWritesTheConfiguration) {
  TempDir folder;
  std::string output =
      RunHost(folder.path(), {},
              "{\"id\":\"1\",\"cmdId\":\"1\",\"method\":\"GetServerInfo\"}\n"
              "{\"id\":\"2\",\"cmdId\":\"2\",\"method\":\"SetServerInfo\",\"parameter\":"
              "[\"127.0.0.1\",18625,18626,18622,18623]}\n"
              "{\"id\":\"3\",\"cmdId\":\"3\",\"method\":\"GetServerInfo\"}\n");
  EXPECT_EQ(output,
            std::string(kGreeting) +
                Answer("{\"Host\":\"\",\"qpt\":{\"port\":\"-1\",\"sslPort\":\"-1\"},"
                       "\"vsm\":{\"port\":\"-1\",\"sslPort\":\"-1\"}}") +
                Answer("{\"Host\":\"127.0.0.1\",\"qpt\":{\"port\":\"18622\",\"sslPort\":\"18623\"},"
                       "\"vsm\":{\"port\":\"18625\",\"sslPort\":\"18626\"}}") +
                Answer("{\"Host\":\"127.0.0.1\",\"qpt\":{\"port\":\"18622\",\"sslPort\":\"18623\"},"
                       "\"vsm\":{\"port\":\"18625\",\"sslPort\":\"18626\"}}") +
                kFarewell);
  EXPECT_EQ(ReadFileBytes(folder.Join("VSConfiguration.ini")),
            "[VS]\nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=18622\nPort_mp_1=18625\n"
            "Server=127.0.0.1\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
            "SSLPort_mp_0=18623\nSSLPort_mp_1=18626\n");
}

TEST(HostProgram, ANewProcessSavesOnlyWhatItSetAndLeavesStaleEntries) {
  TempDir folder;
  WriteFileBytes(folder.Join("VSConfiguration.ini"),
                 "[VS]\nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=1\nPort_mp_1=2\n"
                 "Other= kept \n");
  RunHost(folder.path(),
          {"--origin", "https://127.0.0.1:1",
           "{\"id\":\"1\",\"method\":\"SetServerInfo\",\"parameter\":[\"h\",5,6,7,8]}"},
          "");
  EXPECT_EQ(ReadFileBytes(folder.Join("VSConfiguration.ini")),
            "[VS]\nOther= kept \nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=7\n"
            "Port_mp_1=5\nServer=h\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
            "SSLPort_mp_0=8\nSSLPort_mp_1=6\n");
}

TEST(HostProgram, RefusedAndFailedWritesLeaveNoFile) {
  TempDir folder;
  RunHost(folder.path(),
          {"--origin", "http://localhost",
           "{\"id\":\"1\",\"method\":\"SetServerInfo\",\"parameter\":[\"h\",5,6,7,8]}"},
          "");
  RunHost(folder.path(),
          {"{\"id\":\"1\",\"method\":\"SetServerInfo\",\"parameter\":[\"h\",5,\"x\",7,8]}"}, "");
  EXPECT_FALSE(PathExists(folder.Join("VSConfiguration.ini")));
}

TEST(HostProgram, VSVersionReadsTheFileBesideTheProgram) {
  TempDir folder;
  WriteFileBytes(folder.Join("VSConfiguration.ini"), "[vs]\nvsversion=16.2.1\n");
  std::string output =
      RunHost(folder.path(), {"{\"id\":\"9\",\"cmdId\":\"c\",\"method\":\"VSVersion\"}"}, "");
  EXPECT_EQ(output, std::string(kGreeting) +
                        Answer("{\n   \"event\" : \"VSVersion\",\n   \"id\" : \"9\",\n"
                               "   \"result\" : [ \"16.2.1\", \"Veldorane Service\" ],\n"
                               "\t\"cmdId\" : \"c\"\n}\n") +
                        kFarewell);
}

TEST(HostProgram, StartsBesideALogThatIsAPlainFile) {
  TempDir folder;
  WriteFileBytes(folder.Join("log"), "not a folder");
  WriteFileBytes(folder.Join("VSConfiguration.ini"), "[VS]\nLogLevel=14\n");
  int status = -1;
  std::string output =
      RunHost(folder.path(), {"{\"id\":\"1\",\"method\":\"ChangePort\"}"}, "", &status);
  EXPECT_EQ(status, 0);
  EXPECT_NE(output.find("\"result\" : [ true ]"), std::string::npos) << output;
  EXPECT_EQ(ReadFileBytes(folder.Join("log")), "not a folder");
}

TEST(HostProgram, StartsBesideAReadOnlyFolder) {
  TempDir folder;
  RunHost(folder.path(), {"--no-start"}, "");  // puts the program in place
  chmod(folder.path().c_str(), 0555);
  int status = -1;
  // Root writes into read-only folders, so as root the program runs as nobody.
  const int uid = geteuid() == 0 ? 65534 : -1;
  std::string output =
      RunHostAs(uid, folder.path(), {"{\"id\":\"1\",\"method\":\"ChangePort\"}"}, "", &status);
  chmod(folder.path().c_str(), 0755);
  EXPECT_EQ(status, 0);
  EXPECT_NE(output.find("\"result\" : [ true ]"), std::string::npos) << output;
  EXPECT_FALSE(PathExists(folder.Join("log")));
}

TEST(HostProgram, MistakesInItsOwnUseExitWithTwo) {
  TempDir folder;
  int status = -1;
  std::string output = RunHost(folder.path(), {"--bogus"}, "", &status);
  EXPECT_EQ(status, 2);
  EXPECT_EQ(output, "");
  RunHost(folder.path(), {"--lib", folder.Join("missing.so")}, "", &status);
  EXPECT_EQ(status, 2);
  RunHost(folder.path(), {"--key"}, "", &status);
  EXPECT_EQ(status, 2);
}

}  // namespace
}  // namespace vsm::e2e
