#include "host/logon_user.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "host/shell_command.h"

namespace vsm {
namespace {

TEST(LogonUserTest, CommandTextsWordForWord) {
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
  };
  for (const auto& row : rows) EXPECT_EQ(row.first, row.second);
}

TEST(LogonUserTest, ParsePidField) {
  // Without a name or a line feed behind the number, the number is cut short.
  const std::pair<const char*, long> rows[] = {{"1234/firefox\n", 1234},
                                               {"  987/chrome\n", 987},
                                               {"1234/a\n", 1234},
                                               {"1234/\n", 123},
                                               {"1234/a", 123},
                                               {"7\n", 7},
                                               {"-\n", 0},
                                               {"", 0},
                                               {nullptr, 0}};
  for (const auto& row : rows) EXPECT_EQ(ParsePidField(row.first), row.second) << row.first;
}

TEST(LogonUserTest, NameToUid) {
  uid_t uid = 99;
  gid_t gid = 99;
  EXPECT_EQ(name_to_uid("root", &uid, &gid), 0);
  EXPECT_EQ(std::to_string(uid) + " " + std::to_string(gid), "0 0");
  EXPECT_EQ(name_to_uid("vsm-no-such-user", &uid, &gid), -1);
  EXPECT_EQ(name_to_uid(nullptr, &uid, &gid), -1);
}

// The commands must work with the tools at hand, not only read right.
TEST(LogonUserTest, PeerQueriesOnThisProcess) {
  std::string line =
      ReadCommandLine(FormatShellCommand(kProcessEnvironmentCommand, getpid()).c_str());
  EXPECT_TRUE(line.empty() || (line.back() == '\n' && line.find('=') != std::string::npos));
  int unconnected = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(GetPeerUid(static_cast<uint32_t>(unconnected)), "");
  if (std::system("command -v netstat > /dev/null") != 0) GTEST_SKIP() << "no netstat";

  // The listener and the client are both this process, so netstat leads back to it.
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  ASSERT_EQ(bind(unconnected, reinterpret_cast<sockaddr*>(&address), length), 0);
  ASSERT_EQ(listen(unconnected, 1), 0);
  ASSERT_EQ(getsockname(unconnected, reinterpret_cast<sockaddr*>(&address), &length), 0);
  int client = socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), length), 0);
  int accepted = accept(unconnected, nullptr, nullptr);
  ASSERT_GE(accepted, 0);
  EXPECT_EQ(GetPeerUid(static_cast<uint32_t>(accepted)), std::to_string(getuid()));
  close(accepted);
  close(client);
  close(unconnected);
}

}  // namespace
}  // namespace vsm
