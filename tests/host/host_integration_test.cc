// The Linux host integration: the command lines it hands to a shell, the chain from a browser's
// socket to a program in its user's session (the parsing of the user's files, the launch itself),
// certificates and scan files.
#include "host/logon_user.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>

#include "config/log_writer.h"
#include "config/path_table.h"
#include "host/certificates.h"
#include "host/dialog_command.h"
#include "host/process_launch.h"
#include "host/scan_files.h"
#include "host/shell_command.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

// Every command line that host/ hands to a shell, word for word: nothing is quoted, on purpose.
TEST(LogonUserTest, CommandTextsAndTheirOutput) {
  BuildPathTable("/opt/x/prog");
  // clang-format off
  const std::pair<std::string, std::string> rows[] = {
      {FormatShellCommand(kPortProcessCommand, 52314), R"(netstat -aopn | grep -v VeldoraneS | grep 127.0.0.1:52314 | awk -F' ' {'print $7'})"},
      {FormatShellCommand(kProcessEnvironmentCommand, 4711), R"(sed 's/\x0/\n/g' /proc/4711/environ)"},
      {FormatShellCommand(kSaveDisplayCommand, ":1"), "echo :1 > /opt/veldorane/VeldoraneService/DISPLAY.log"},
      {FormatShellCommand(kOpenProcessStatusCommand, 4711), "chmod 777 /proc/4711/status"},
      {FormatShellCommand(kProcessUidCommand, 4711), R"(cat /proc/4711/status | grep Uid | awk -F' ' {'print $2'})"},
      {FormatShellCommand(kUserUidCommand, "root"), "id -u root"},
      {FormatShellCommand(kOpenToAllCommand, "/a b"), "chmod 777 /a b"},
      {GetDialogCommandWithText("a b"), "/opt/x/quillport_dialog 1 a b"},
      {GetDialogCommandWithText(nullptr), "/opt/x/quillport_dialog 1 "},
      {GetDialogCommandPlain(), "/opt/x/quillport_dialog 2"},
      {GetDialogCommandFull(5, -1, "say \"hi\""), "/opt/x/quillport_dialog 3 5 -1 \"say \"hi\"\""},
      {kCertCountCommand, "certutil -L -d sql:$HOME/.pki/nssdb| grep veldorane_quillport| wc -l"},
      {GetCertCheckCommand(), "/opt/x/DebInstallCertCheck&"},
      {GetServerCertInstallCommand(), R"(certutil -A -d sql:$HOME/.pki/nssdb -t "P,," -n "veldorane_quillport" -i /opt/x/server.der)"},
      {GetRootCertInstallCommand(), R"(certutil -A -d sql:$HOME/.pki/nssdb -t "C,," -n "veldorane_quillport_root" -i /opt/x/cert/cacert.pem)"},
      {GetSystemInfoCommand(), "echo `uname -a` > /opt/x/log/SystemInfo.log"},
      {GetPnmToBmpCommand("a.pnm", "b.bmp"), "/opt/x/pnm2bmp a.pnm > b.bmp"}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(row.first, row.second);

  // Without a name or a line feed behind the number, the number is cut short.
  std::string pids;
  for (const char* text : {"1234/firefox\n", "  987/chrome\n", "1234/a\n", "1234/\n", "1234/a",
                           "7\n", "-\n", "", static_cast<const char*>(nullptr)})
    pids += std::to_string(ParsePidField(text)) + " ";
  EXPECT_EQ(pids, "1234 987 1234 123 123 7 0 0 0 ");
}

// A login record in the system's 400-byte layout: user at byte 44, host at byte 76.
std::string Record(const std::string& user, const std::string& host) {
  return std::string(400, '\0').replace(44, user.size(), user).replace(76, host.size(), host);
}

TEST(LogonUserTest, EnvironmentFileThenLoginRecords) {
  testing::TempDir dir;
  const std::string rec9 = Record("root", "rec:9");
  // An empty host doesn't end the search, and an unknown user's uid matches nothing.
  const std::string mixed = Record("root", "") + Record("vsm-no-such-user", "bad:1") +
                            Record("root", ":5") + Record("root", ":6");
  // The environment file (null: none), the login records ("-": none), then DISPLAY and
  // VSM_LAUNCH_A ("-": unset).
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"DISPLAY=:1\nVSM_LAUNCH_A=x\n", rec9, ":1 x"},  // the records aren't read
      {"VSM_LAUNCH_A=x\nno equals sign\n", rec9, "rec:9 x"},
      {"VSM_LAUNCH_A=a=b\n", rec9, "rec:9 a=b"},
      {"VSM_LAUNCH_A=xyz", rec9, "rec:9 xy"},  // no line feed: the last character goes all the same
      {nullptr, rec9, "rec:9 -"},
      {nullptr, mixed, ":5 -"},
      {nullptr, Record("root", ""), ":0 -"},
      {nullptr, Record("root", ":5").substr(0, 399), ":0 -"},
      {nullptr, "-", ":0 -"}};
  int i = 0;  // each case with files of its own
  for (const auto& [environment, records, expected] : rows) {
    const std::string environmentFile = dir.Join(std::to_string(i++)), utmp = environmentFile + "u";
    if (environment != nullptr) testing::WriteFileBytes(environmentFile, environment);
    if (records != "-") testing::WriteFileBytes(utmp, records);
    PrepareLaunchEnvironment(environmentFile, utmp.c_str(), "0");  // root's uid
    const char *display = getenv("DISPLAY"), *a = getenv("VSM_LAUNCH_A");
    EXPECT_EQ(std::string(display ? display : "-") + " " + (a ? a : "-"), expected)
        << environmentFile;
    unsetenv("DISPLAY");
    unsetenv("VSM_LAUNCH_A");
  }
}

// Launches `program` from a child of the test, so that neither the launch's child nor a failed
// exec runs on in the test suite. Gives the launched program's exit status, or 42 when the
// launch's child came back from the call with -1. The socket has no peer, so the uid is empty
// and the environment file is "<root>.log".
int LaunchFromChild(const std::string& program, bool verbose) {
  int status = 0;
  const pid_t wrapper = fork();
  if (wrapper == 0) {
    SetVerboseLogging(verbose);
    const int result =
        CreateProcessAsCurrentLogonUser(program.c_str(), "cmd line", nullptr, nullptr, 0, 0,
                                        "extra", nullptr, nullptr, nullptr, ~0u);
    if (result == 1) wait(&status);
    _exit(result == -1 ? 42 : result != 1 ? 99 : WIFEXITED(status) ? WEXITSTATUS(status) : 98);
  }
  waitpid(wrapper, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(LogonUserTest, LaunchedProgramGetsArgumentsAndUserEnvironment) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  testing::WriteFileBytes(dir.Join(".log"), "DISPLAY=:3\nVSM_LAUNCH_A=abc\n");
  const std::string program = dir.Join("fake");
  testing::WriteFileBytes(program,
                          "#!/bin/sh\n{ for a in \"$0\" \"$@\"; do printf '[%s]' \"$a\"; done\n"
                          "  echo \" $DISPLAY $VSM_LAUNCH_A\"; } > \"$0.out\"\n");
  chmod(program.c_str(), 0755);
  for (bool verbose : {false, true}) {
    ASSERT_EQ(LaunchFromChild(program, verbose), 0);
    EXPECT_EQ(
        testing::ReadFileBytes(program + ".out"),
        "[" + program + "][scan][cmd line][1][1][" + (verbose ? "1" : "0") + "][extra] :3 abc\n");
  }
  // A failed exec returns -1 in the child, which logs first. A user lookup logs its failure.
  ASSERT_EQ(mkdir(GetLogDirectory().c_str(), 0755), 0);
  EXPECT_EQ(LaunchFromChild(dir.Join("missing"), true), 42);
  uid_t uid = 99;
  gid_t gid = 99;
  SetVerboseLogging(true);
  EXPECT_TRUE(name_to_uid("root", &uid, &gid) == 0 && uid == 0 && gid == 0);
  EXPECT_EQ(name_to_uid("vsm-no-such-user", &uid, &gid) + name_to_uid(nullptr, &uid, &gid), -2);
  const std::string log = testing::ReadFileBytes(GetServiceLogFile());
  for (const char* line : {"CreateProcessAsCurrentLogonUser return: ",
                           "CreateProcessAsCurrentLogonUser fork child process end\n",
                           "execve failed: Something wrong with child !", "name_to_uid failed."})
    EXPECT_NE(log.find(line), std::string::npos) << line << " not in\n" << log;
}

// Both ends of a loopback connection are this process, so netstat leads back to it.
TEST(LogonUserTest, PeerUidOfALoopbackConnection) {
  EXPECT_EQ(GetPeerUid(~0u), "");  // no socket, no peer
  if (std::system("command -v netstat > /dev/null") != 0) GTEST_SKIP() << "no netstat";
  const int listener = socket(AF_INET, SOCK_STREAM, 0), client = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};  // any free port
  socklen_t length = sizeof(address);
  auto* name = reinterpret_cast<sockaddr*>(&address);
  ASSERT_TRUE(bind(listener, name, length) == 0 && listen(listener, 1) == 0 &&
              getsockname(listener, name, &length) == 0 && connect(client, name, length) == 0);
  const int accepted = accept(listener, nullptr, nullptr);
  EXPECT_EQ(GetPeerUid(static_cast<uint32_t>(accepted)), std::to_string(getuid()));
  for (int fd : {accepted, client, listener}) close(fd);
}

TEST(HostFilesTest, OriginsCertCountAndScanFiles) {
  // The host keeps its case and a path is cut; the scheme may stand anywhere; the text goes whole
  // through the host name encoder, which refuses an empty label.
  std::string origins;
  for (const char* origin : {"", "null", "NULL", "ftp://example.test", "HTTP://Example.test/a/b",
                             "x http://y", "http://a..b/", "https://b\u00FCcher.example/"})
    origins += "[" + NormalizeOrigin(origin) + "]";
  EXPECT_EQ(origins,
            "[][null][NULL][][HTTP://Example.test][x http://y][][xn--https://bcher-4ob.example]");

  // Only the test against zero means anything; the factor of ten stays as callers see it.
  const std::pair<const char*, int64_t> counts[] = {
      {"printf '2\\n'", 20}, {"printf '0\\n'", 0}, {"printf '12\\n'", 120}, {"true", 0}};
  for (const auto& row : counts) EXPECT_EQ(CountInstalledCertsWith(row.first), row.second);

  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  WriteCurrentSource(3, "X");
  WriteCurrentSource(4294967295u, "Y");  // the number is written with "%d"
  EXPECT_EQ(ReadCurrentSource(3) + "|" + ReadCurrentSource(4) + "|" +
                testing::ReadFileBytes(dir.Join("VSConfiguration.ini")),
            "X||[VS]\nCurrentSource-1=Y\nCurrentSource3=X\n");
  const std::string stem = dir.path() + "/linuxQPT" + std::to_string(getpid());
  char* paths[] = {MakeScanPnmPath(), MakeScanBmpPath()};
  EXPECT_EQ(std::string(paths[0]) + "|" + paths[1], stem + ".pnm|" + stem + ".bmp");
  for (char* path : paths) free(path);
}

}  // namespace
}  // namespace vsm
