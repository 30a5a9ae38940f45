// The library loaded by a host program that lives in a folder of its own (a copy of vsmctl in a
// temporary folder): start-up builds its tree and files there, and configuration writes are
// checked byte for byte in that folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "e2e/harness/host_harness.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm::e2e {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::TempDir;
using testing::WriteFileBytes;

constexpr char kGreeting[] =
    "alias: vsm (4)\nversion: qwasm2_16261212 (16)\nports: 18625 18626\nDoAction(0): 1\n";
constexpr char kFarewell[] = "wait timeout: 1\nDoAction(3): 1\n";
constexpr char kRegistry[] =
    "Port=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=18622\nPort_mp_1=18625\nServer=127.0.0.1\n"
    "SSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\nSSLPort_mp_0=18623\nSSLPort_mp_1=18626\n";
constexpr char kSetServerInfo[] =
    "{\"id\":\"2\",\"method\":\"SetServerInfo\",\"parameter\":[\"127.0.0.1\",18625,18626,18622,"
    "18623]}";

std::string Answer(const std::string& text) {
  return "--- answer (" + std::to_string(text.size()) + " bytes)\n" + text +
         (text.back() != '\n' ? "\n" : "") + "--- result 1\n";
}

unsigned ModeOf(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

TEST(HostProgram, StartUpBuildsTheWorkingTreeBesideTheProgram) {
  TempDir quiet, verbose;
  RunHost(quiet.path(), {"{\"id\":\"1\",\"method\":\"Nope\"}"}, "");
  EXPECT_EQ(ReadFileBytes(quiet.Join("log/vss.log")), "");  // the default mask logs nothing
  WriteFileBytes(verbose.Join("VSConfiguration.ini"), "[VS]\nLogLevel=14\n");
  int status = -1;
  EXPECT_EQ(RunHost(verbose.path(), {}, "", &status), std::string(kGreeting) + kFarewell);
  EXPECT_EQ(status, 0);
  for (const char* directory : {"log", "cache", "upload", "dump"}) {
    EXPECT_TRUE(PathExists(verbose.Join(directory))) << directory;
  }
  EXPECT_EQ(ModeOf(verbose.Join("log")), 0777u);
  EXPECT_EQ(ModeOf(verbose.Join("dump")), 0777u);
  EXPECT_FALSE(PathExists(verbose.Join("cert")));
  EXPECT_EQ(testing::WithoutHeads(ReadFileBytes(verbose.Join("log/vss.log"))),
            "H [Debug-0]: Version info:Veldorane Service Manager Module, vsm build 1212---16, 2, "
            "6, 1212, \r\n\t\tis64:1, isScanning=0, workMode=0, isQPTActiveX=0\r\n\n");
}

TEST(HostProgram, ServerInfoConversationWritesTheConfiguration) {
  TempDir folder;
  const std::string ports =
      "{\"Host\":\"127.0.0.1\",\"qpt\":{\"port\":\"18622\",\"sslPort\":\"18623\"},"
      "\"vsm\":{\"port\":\"18625\",\"sslPort\":\"18626\"}}";
  EXPECT_EQ(RunHost(folder.path(), {},
                    std::string("{\"method\":\"GetServerInfo\"}\n") + kSetServerInfo +
                        "\n{\"method\":\"GetServerInfo\"}\n"),
            std::string(kGreeting) +
                Answer("{\"Host\":\"\",\"qpt\":{\"port\":\"-1\",\"sslPort\":\"-1\"},"
                       "\"vsm\":{\"port\":\"-1\",\"sslPort\":\"-1\"}}") +
                Answer(ports) + Answer(ports) + kFarewell);
  EXPECT_EQ(ReadFileBytes(folder.Join("VSConfiguration.ini")), std::string("[VS]\n") + kRegistry);
  // A new process saves only what it has set, and stale entries of higher index stay.
  WriteFileBytes(folder.Join("VSConfiguration.ini"),
                 "[VS]\nPort=2\nPort_mn_0=zzz\nPort_mn_1=yyy\nPort_mn_2=old\nOther= kept \n");
  RunHost(folder.path(),
          {"{\"method\":\"SetServerInfo\",\"parameter\":[\"h\",5,6,7,8]}",
           "{\"method\":\"VSVersion\"}"},
          "");
  EXPECT_EQ(ReadFileBytes(folder.Join("VSConfiguration.ini")),
            "[VS]\nOther= kept \nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mn_2=old\n"
            "Port_mp_0=7\nPort_mp_1=5\nServer=h\nSSLPort=2\nSSLPort_mn_0=qpt\nSSLPort_mn_1=vsm\n"
            "SSLPort_mp_0=8\nSSLPort_mp_1=6\n");
}

TEST(HostProgram, RefusedAndFailedWritesLeaveNoFile) {
  TempDir folder;
  RunHost(folder.path(), {"--origin", "http://localhost", kSetServerInfo}, "");
  RunHost(folder.path(), {"{\"method\":\"SetServerInfo\",\"parameter\":[\"h\",5,\"x\",7,8]}"}, "");
  EXPECT_FALSE(PathExists(folder.Join("VSConfiguration.ini")));
}

TEST(HostProgram, StartsWhereItCannotBuildItsTree) {
  TempDir plainLog, readOnly;
  WriteFileBytes(plainLog.Join("log"), "not a folder");
  WriteFileBytes(plainLog.Join("VSConfiguration.ini"), "[VS]\nLogLevel=14\n");
  WriteFileBytes(plainLog.Join("libvsm.so"), ReadFileBytes(VSM_LIBRARY_PATH));
  // The program and the library go into the folder first: the user "nobody" below may not be able
  // to reach the build tree.
  RunHost(readOnly.path(), {"--no-start"}, "");
  WriteFileBytes(readOnly.Join("libvsm.so"), ReadFileBytes(VSM_LIBRARY_PATH));
  chmod(readOnly.path().c_str(), 0555);
  // Root writes into read-only folders, so as root the program runs as nobody.
  for (const std::string& folder : {plainLog.path(), readOnly.path()}) {
    int status = -1;
    std::string output = RunHostAs(
        folder == readOnly.path() && geteuid() == 0 ? 65534 : -1, folder,
        {"--lib", folder + "/libvsm.so", "{\"id\":\"1\",\"method\":\"ChangePort\"}"}, "", &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(output.find("\"result\" : [ true ]"), std::string::npos) << output;
  }
  chmod(readOnly.path().c_str(), 0755);
  EXPECT_EQ(ReadFileBytes(plainLog.Join("log")), "not a folder");
  EXPECT_FALSE(PathExists(readOnly.Join("log")));
}

// No shell sees the folder's name: none of these runs a command, and a path of 600 and more
// characters starts like any other.
TEST(HostProgram, StartsFromAnyFolderNameWithoutRunningIt) {
  TempDir base;
  ASSERT_EQ(chdir(base.path().c_str()), 0);  // where a command that slipped through would write
  const std::string part(200, 'n');
  for (const std::string& name : {std::string("semi;touch PWNED;x"), std::string("two  blanks"),
                                  std::string("quote'\"s"), std::string("$(touch PWNED)"),
                                  std::string("`touch PWNED`"), part + "/" + part + "/" + part}) {
    const std::string folder = base.Join(name);
    std::filesystem::create_directories(folder);
    int status = -1;
    std::string output = RunHost(folder, {"{\"method\":\"ChangePort\"}"}, "", &status);
    EXPECT_EQ(status, 0) << name;
    EXPECT_NE(output.find("\"result\" : [ true ]"), std::string::npos) << name << output;
    EXPECT_TRUE(ModeOf(folder + "/log") == 0777 && ModeOf(folder + "/dump") == 0777) << name;
  }
  EXPECT_FALSE(PathExists(base.Join("PWNED")));
}

TEST(HostProgram, MistakesInItsOwnUseExitWithTwo) {
  TempDir folder;
  for (std::vector<std::string> arguments :
       {std::vector<std::string>{"--bogus"}, {"--lib", folder.Join("missing.so")}, {"--key"}}) {
    int status = -1;
    EXPECT_EQ(RunHost(folder.path(), arguments, "", &status), "");
    EXPECT_EQ(status, 2);
  }
}

}  // namespace
}  // namespace vsm::e2e
