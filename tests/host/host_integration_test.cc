// The Linux host integration: the command lines it hands to a shell, the chain from a browser's
// socket to a program in its user's session (the parsing of the user's files, the launch itself),
// certificates and scan files.
#include "host/logon_user.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <string>
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
  const std::pair<std::string, std::string> rows[] = {
      {FormatShellCommand(kPortProcessCommand, 52314),
       R"(netstat -aopn | grep -v VeldoraneS | grep 127.0.0.1:52314 | awk -F' ' {'print $7'})"},
      {FormatShellCommand(kProcessEnvironmentCommand, 4711),
       R"(sed 's/\x0/\n/g' /proc/4711/environ)"},
      {FormatShellCommand(kSaveDisplayCommand, ":1"),
       "echo :1 > /opt/veldorane/VeldoraneService/DISPLAY.log"},
      {FormatShellCommand(kOpenProcessStatusCommand, 4711), "chmod 777 /proc/4711/status"},
      {FormatShellCommand(kProcessUidCommand, 4711),
       R"(cat /proc/4711/status | grep Uid | awk -F' ' {'print $2'})"},
      {FormatShellCommand(kUserUidCommand, "root"), "id -u root"},
      {FormatShellCommand(kOpenToAllCommand, "/a b"), "chmod 777 /a b"},
      {GetDialogCommandWithText("a b"), "/opt/x/quillport_dialog 1 a b"},
      {GetDialogCommandWithText(nullptr), "/opt/x/quillport_dialog 1 "},
      {GetDialogCommandPlain(), "/opt/x/quillport_dialog 2"},
      {GetDialogCommandFull(5, -1, "say \"hi\""), "/opt/x/quillport_dialog 3 5 -1 \"say \"hi\"\""},
      {kCertCountCommand, "certutil -L -d sql:$HOME/.pki/nssdb| grep veldorane_quillport| wc -l"},
      {GetCertCheckCommand(), "/opt/x/DebInstallCertCheck&"},
      {GetServerCertInstallCommand(),
       R"(certutil -A -d sql:$HOME/.pki/nssdb -t "P,," -n "veldorane_quillport" -i /opt/x/server.der)"},
      {GetRootCertInstallCommand(),
       R"(certutil -A -d sql:$HOME/.pki/nssdb -t "C,," -n "veldorane_quillport_root" -i /opt/x/cert/cacert.pem)"},
      {GetSystemInfoCommand(), "echo `uname -a` > /opt/x/log/SystemInfo.log"},
      {GetPnmToBmpCommand("a.pnm", "b.bmp"), "/opt/x/pnm2bmp a.pnm > b.bmp"},
  };
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
  std::string record(400, '\0');
  record.replace(44, user.size(), user);
  return record.replace(76, host.size(), host);
}

// "<DISPLAY> <VSM_LAUNCH_A>" ("-" for unset); both are cleared for the next case.
std::string TakeVariables() {
  const char *display = getenv("DISPLAY"), *a = getenv("VSM_LAUNCH_A");
  const std::string text = std::string(display ? display : "-") + " " + (a ? a : "-");
  unsetenv("DISPLAY");
  unsetenv("VSM_LAUNCH_A");
  return text;
}

TEST(LogonUserTest, EnvironmentFileThenLoginRecords) {
  testing::TempDir dir;
  const std::string rec9 = Record("root", "rec:9");
  // An empty host doesn't end the search, and an unknown user's uid matches nothing.
  const std::string mixed = Record("root", "") + Record("vsm-no-such-user", "bad:1") +
                            Record("root", ":5") + Record("root", ":6");
  const struct {
    const char* environment;  // null: no file
    std::string records;      // "-": no file
    const char* expected;
  } rows[] = {
      {"DISPLAY=:1\nVSM_LAUNCH_A=x\n", rec9, ":1 x"},  // the records aren't read
      {"VSM_LAUNCH_A=x\nno equals sign\n", rec9, "rec:9 x"},
      {"VSM_LAUNCH_A=a=b\n", rec9, "rec:9 a=b"},
      {"VSM_LAUNCH_A=xyz", rec9, "rec:9 xy"},  // no line feed: the last character goes all the same
      {nullptr, rec9, "rec:9 -"},
      {nullptr, mixed, ":5 -"},
      {nullptr, Record("root", ""), ":0 -"},
      {nullptr, Record("root", ":5").substr(0, 399), ":0 -"},
      {nullptr, "-", ":0 -"}};
  for (size_t i = 0; i < std::size(rows); ++i) {  // each case with files of its own
    const std::string environment = dir.Join(std::to_string(i)), records = environment + "utmp";
    if (rows[i].environment != nullptr) testing::WriteFileBytes(environment, rows[i].environment);
    if (rows[i].records != "-") testing::WriteFileBytes(records, rows[i].records);
    PrepareLaunchEnvironment(environment, records.c_str(), "0");  // root's uid
    EXPECT_EQ(TakeVariables(), rows[i].expected) << i;
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
  // A failed exec returns -1 in the child, which logs first.
  ASSERT_EQ(mkdir(GetLogDirectory().c_str(), 0755), 0);
  EXPECT_EQ(LaunchFromChild(dir.Join("missing"), true), 42);
  const std::string log = testing::ReadFileBytes(GetServiceLogFile());
  for (const char* line : {"CreateProcessAsCurrentLogonUser return: ",
                           "CreateProcessAsCurrentLogonUser fork child process end\n",
                           "execve failed: Something wrong with child !"})
    EXPECT_NE(log.find(line), std::string::npos) << line << " not in\n" << log;
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
  const std::string root = dir.path() + "/", pid = std::to_string(getpid());
  char* paths[] = {MakeScanPnmPath(), MakeScanBmpPath()};
  EXPECT_EQ(std::string(paths[0]) + "|" + paths[1],
            root + "linuxQPT" + pid + ".pnm|" + root + "linuxQPT" + pid + ".bmp");
  for (char* path : paths) free(path);
}

}  // namespace
}  // namespace vsm
