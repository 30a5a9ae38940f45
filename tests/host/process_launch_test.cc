#include "host/process_launch.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "config/log_writer.h"
#include "config/path_table.h"
#include "host/shell_command.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

// A login record in the system's 400-byte layout: user at byte 44, host at byte 76.
std::string LoginRecord(const std::string& user, const std::string& host) {
  std::string record(400, '\0');
  record.replace(44, user.size(), user);
  return record.replace(76, host.size(), host);
}

// "DISPLAY VSM_LAUNCH_A", then both are cleared for the next case.
std::string TakeVariables() {
  std::string text;
  for (const char* name : {"DISPLAY", "VSM_LAUNCH_A"}) {
    const char* value = getenv(name);
    text += std::string(text.empty() ? "" : " ") + (value != nullptr ? value : "-");
    unsetenv(name);
  }
  return text;
}

class ProcessLaunchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    rootUid_ = ReadCommandLine("id -u root");
    DropLastCharacter(&rootUid_);
    TakeVariables();
    BuildPathTable(dir_.Join("prog"));
  }
  void TearDown() override { TakeVariables(); }

  testing::TempDir dir_;
  std::string rootUid_;
};

TEST_F(ProcessLaunchTest, EnvironmentFileThenLoginRecords) {
  // The records give "rec:9", so a DISPLAY of ":1" shows that they weren't read.
  WriteFileBytes(dir_.Join("utmp"), LoginRecord("root", "rec:9"));
  const std::pair<const char*, const char*> rows[] = {
      {"DISPLAY=:1\nVSM_LAUNCH_A=x\n", ":1 x"},
      {"VSM_LAUNCH_A=x\nno equals sign\n", "rec:9 x"},
      {"VSM_LAUNCH_A=a=b\n", "rec:9 a=b"},
      {"VSM_LAUNCH_A=xyz", "rec:9 xy"},  // no line feed: the last character goes all the same
      {nullptr, "rec:9 -"},              // no file
  };
  for (const auto& row : rows) {
    std::string file = dir_.Join(row.first != nullptr ? "env.log" : "missing.log");
    if (row.first != nullptr) WriteFileBytes(file, row.first);
    PrepareLaunchEnvironment(file, dir_.Join("utmp").c_str(), rootUid_);
    EXPECT_EQ(TakeVariables(), row.second) << (row.first != nullptr ? row.first : "(none)");
  }
}

TEST_F(ProcessLaunchTest, DisplayFromLoginRecords) {
  const std::pair<std::string, const char*> rows[] = {
      // An empty host doesn't end the search, and an unknown user's uid matches nothing.
      {LoginRecord("root", "") + LoginRecord("vsm-no-such-user", "bad:1") +
           LoginRecord("root", ":5") + LoginRecord("root", ":6"),
       ":5 -"},
      {LoginRecord("root", ""), ":0 -"},
      {LoginRecord("root", ":5").substr(0, 399), ":0 -"},
  };
  for (const auto& row : rows) {
    WriteFileBytes(dir_.Join("utmp"), row.first);
    SetDisplayFromLoginRecords(dir_.Join("utmp").c_str(), rootUid_);
    EXPECT_EQ(TakeVariables(), row.second) << row.first.size() << " bytes";
  }
  SetDisplayFromLoginRecords(dir_.Join("none").c_str(), rootUid_);
  EXPECT_EQ(TakeVariables(), ":0 -");
}

constexpr int kChildReturned = 42;

// Launches `program` from a child of the test, so that neither the launch's child nor a failed
// exec runs on in the test suite. Gives the launched program's exit status, or kChildReturned
// when the launch's child came back from the call. The socket has no peer, so the uid is empty
// and the environment file is "<root>.log".
int LaunchFromChild(const std::string& program, bool verbose) {
  pid_t wrapper = fork();
  if (wrapper == 0) {
    SetVerboseLogging(verbose);
    int result =
        CreateProcessAsCurrentLogonUser(program.c_str(), "cmd line", nullptr, nullptr, 0, 0,
                                        "extra", nullptr, nullptr, nullptr, 0xFFFFFFFFu);
    if (result != 1) _exit(result == -1 ? kChildReturned : 99);
    int status = 0;
    wait(&status);
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 98);
  }
  int status = 0;
  waitpid(wrapper, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(ProcessLaunchTest, LaunchedProgramGetsArgumentsAndUserEnvironment) {
  WriteFileBytes(dir_.Join(".log"), "DISPLAY=:3\nVSM_LAUNCH_A=abc\n");
  std::string program = dir_.Join("fake");
  WriteFileBytes(program,
                 "#!/bin/sh\n{ for a in \"$0\" \"$@\"; do printf '[%s]' \"$a\"; done\n"
                 "  echo \" $DISPLAY $VSM_LAUNCH_A\"; } > \"$0.out\"\n");
  chmod(program.c_str(), 0755);
  for (bool verbose : {false, true}) {
    ASSERT_EQ(LaunchFromChild(program, verbose), 0);
    EXPECT_EQ(ReadFileBytes(program + ".out"), "[" + program + "][scan][cmd line][1][1][" +
                                                   (verbose ? "1" : "0") + "][extra] :3 abc\n");
  }
}

TEST_F(ProcessLaunchTest, FailedExecReturnsMinusOneInTheChildAndLogs) {
  WriteFileBytes(dir_.Join(".log"), "DISPLAY=:3\n");
  ASSERT_EQ(mkdir(GetLogDirectory().c_str(), 0755), 0);
  EXPECT_EQ(LaunchFromChild(dir_.Join("missing"), true), kChildReturned);
  std::string log = ReadFileBytes(GetServiceLogFile());
  for (const char* line : {"CreateProcessAsCurrentLogonUser return: ",
                           "CreateProcessAsCurrentLogonUser fork child process end\n",
                           "execve failed: Something wrong with child !"}) {
    EXPECT_NE(log.find(line), std::string::npos) << line << " not in\n" << log;
  }
}

}  // namespace
}  // namespace vsm
