#include "config/port_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config/module_identity.h"
#include "config/path_table.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

using testing::ReadFileBytes;

// "name:port," for each entry in table order.
std::string Text(const PortTable& table) {
  std::string text;
  for (const auto& entry : table) text += entry.first + ":" + std::to_string(entry.second) + ",";
  return text;
}

// Entries "Port_mn_<i>=<name i>" and "Port_mp_<i>=<100 + i>".
std::string Entries(const std::vector<std::string>& names) {
  std::string lines;
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string n = std::to_string(i);
    lines +=
        "Port_mn_" + n + "=" + names[i] + "\nPort_mp_" + n + "=" + std::to_string(100 + i) + "\n";
  }
  return lines;
}

class PortRegistryTest : public ::testing::Test {
 protected:
  void SetUp() override { BuildPathTable(dir_.Join("prog")); }
  void Write(const std::string& content) {
    testing::WriteFileBytes(dir_.Join("VSConfiguration.ini"), "[VS]\n" + content);
  }
  std::string File() const { return ReadFileBytes(dir_.Join("VSConfiguration.ini")); }

  testing::TempDir dir_;
};

TEST_F(PortRegistryTest, LoadsFollowTheStoredCountOrTheLimitOfTen) {
  const std::vector<std::string> eleven = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
  const std::string ten = "a:100,b:101,c:102,d:103,e:104,f:105,g:106,h:107,i:108,j:109,";
  const struct {
    std::string file;
    bool useStoredCount;
    std::string expected;
  } rows[] = {
      {"Port=0\n" + Entries({"vsm", "qpt"}), false, "qpt:101,vsm:100,"},
      {"Port=0\n" + Entries({"vsm", "qpt"}), true, ""},
      {Entries({"vsm"}), true, ""},
      {"Port=5\n" + Entries({"vsm", "qpt"}), true, "qpt:101,vsm:100,"},
      {"Port=1\n" + Entries({"vsm", "qpt"}), true, "vsm:100,"},
      {"Port=11\n" + Entries(eleven), false, ten},
      {"Port=11\n" + Entries(eleven), true, ten + "k:110,"},
      {"Port=1\nPort_mn_0=vsm\nPort_mp_0=x1\n", true, "vsm:0,"},
      {Entries({"vsm", "vsm"}), false, "vsm:101,"},
      {"Port=3\nPort_mn_0=a\nPort_mp_0=1\nPort_mn_2=c\nPort_mp_2=3\n", true, "a:1,"},
      {"SSLPort_mn_0=a\nSSLPort_mp_0=1\n", false, ""},
  };
  for (const auto& row : rows) {
    Write(row.file);
    PortTable table = {{"old", 1}};
    LoadPlainPortTable(&table, row.useStoredCount);
    EXPECT_EQ(Text(table), row.expected) << row.file << row.useStoredCount;
  }
  Write("SSLPort_mn_0=vsm\nSSLPort_mp_0=443\n" + Entries({"qpt"}));
  EXPECT_EQ(GetSslPortOf("vsm", false) + GetSslPortOf("x", false) + GetPlainPortOf("qpt", true),
            443u);
}

TEST_F(PortRegistryTest, SettingAPortSavesOnlyWhatThisProcessSetInNameOrder) {
  Write("Port=2\n" + Entries({"qpt", "zzz"}));
  SetPlainPortOf(18625, "vsm");
  EXPECT_EQ(File(), "[VS]\nPort=1\nPort_mn_0=vsm\nPort_mn_1=zzz\nPort_mp_0=18625\nPort_mp_1=101\n");
  PortTable table;
  LoadPlainPortTable(&table, false);  // the stale entry comes back without the count
  EXPECT_EQ(Text(table), "vsm:18625,zzz:101,");
  SetPlainPortOf(18626, "qpt");
  SetPlainPortOf(18627, "vsm");
  SetSslPortOf(443, "vsm");
  EXPECT_EQ(File(),
            "[VS]\nPort=2\nPort_mn_0=qpt\nPort_mn_1=vsm\nPort_mp_0=18626\nPort_mp_1=18627\n"
            "SSLPort=1\nSSLPort_mn_0=vsm\nSSLPort_mp_0=443\n");
  LoadSslPortTable(&table, true);
  EXPECT_EQ(Text(table) + GetPortLockName(), "vsm:443,port.lock");
}

TEST_F(PortRegistryTest, UserPortsLiveInTheUsersSection) {
  WriteUserPort("alice", "vsm", true, true, 443);
  WriteUserPort("alice", "vsm", false, false, 80);
  WriteUserPort("alice", "qpt", false, true, -1);
  EXPECT_EQ(ReadFileBytes(dir_.Join("user_config.ini")),
            "[alice]\nqpt_ssl=-1\nvsm=80\nvsm_ssl=443\nvsm_ssl_def=443\n");
  EXPECT_EQ(
      (std::vector<int32_t>{
          ReadUserPort("alice", "vsm", true, true), ReadUserPort("alice", "vsm", false, false),
          ReadUserPort("alice", "vsm", true, false), ReadUserPort("alice", "qpt", false, true),
          ReadUserPort("bob", "vsm", false, true)}),
      (std::vector<int32_t>{443, 80, 0, -1, 0}));

  // The current user's section is the empty one; only work modes 3 and 6 look at it.
  WriteUserPort("", "qpt", false, true, 8443);
  std::vector<int32_t> ports = {1};
  const std::pair<uint32_t, std::vector<int32_t>> modes[] = {
      {0, {}}, {4, {}}, {3, {8443}}, {6, {8443}}};
  for (const auto& mode : modes) {
    SetWorkMode(mode.first);
    GetUserSslPorts(&ports);
    EXPECT_EQ(ports, mode.second) << mode.first;
  }
  WriteUserPort("", "vsm", false, true, 9443);
  GetUserSslPorts(&ports);
  EXPECT_EQ(ports, (std::vector<int32_t>{9443, 8443}));
}

}  // namespace
}  // namespace vsm
