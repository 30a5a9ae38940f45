#include "host/certificates.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "config/path_table.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

TEST(CertificatesTest, NormalizeOrigin) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"null", "null"},
      {"NULL", "NULL"},
      {"ftp://example.test", ""},
      {"example.test", ""},
      {"HTTP://Example.test/a/b", "HTTP://Example.test"},
      {"https://loopback.veldorane.com:18623", "https://loopback.veldorane.com:18623"},
      {"x http://y", "x http://y"},                      // the scheme may stand anywhere
      {"http://example.test./", "http://example.test"},  // the encoder drops a trailing dot
      {"http://a..b/", ""},                              // an empty label can't be encoded
      {"https://b\u00FCcher.example/", "xn--https://bcher-4ob.example"},
  };
  for (const auto& row : rows) EXPECT_EQ(NormalizeOrigin(row.first), row.second) << row.first;
}

TEST(CertificatesTest, HostCertNamesFromTheConfigurationFile) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  ASSERT_TRUE(testing::WriteFileBytes(dir.Join("VSConfiguration.ini"),
                                      "[other.test]\ncert_name=o.pem\nkey_name=o.key\n"
                                      "[half.test]\ncert_name=h.pem\n"));
  const char* rows[][3] = {
      {"other.test", "o.pem", "o.key"},
      {"half.test", "h.pem", ""},
      {"LOOPBACK.Veldorane.com", "server.pem.lvsc", "server_key.pem.lvsc"},
      {"unknown.test", "", ""},
  };
  for (const auto& row : rows) {
    std::string cert = "stale", key = "stale";
    GetHostCertNames(row[0], &cert, &key);
    EXPECT_EQ(cert + "|" + key, std::string(row[1]) + "|" + row[2]) << row[0];
  }
}

TEST(CertificatesTest, CountKeepsTheFactorOfTen) {
  const std::pair<const char*, int64_t> rows[] = {
      {"printf '2\\n'", 20}, {"printf '0\\n'", 0}, {"printf '12\\n'", 120}, {"true", 0}};
  for (const auto& row : rows) EXPECT_EQ(CountInstalledCertsWith(row.first), row.second);
}

TEST(CertificatesTest, CommandTexts) {
  BuildPathTable("/opt/x/prog");
  const std::pair<std::string, std::string> rows[] = {
      {kCertCountCommand, "certutil -L -d sql:$HOME/.pki/nssdb| grep veldorane_quillport| wc -l"},
      {GetCertCheckCommand(), "/opt/x/DebInstallCertCheck&"},
      {GetServerCertInstallCommand(),
       R"(certutil -A -d sql:$HOME/.pki/nssdb -t "P,," -n "veldorane_quillport" -i /opt/x/server.der)"},
      {GetRootCertInstallCommand(),
       R"(certutil -A -d sql:$HOME/.pki/nssdb -t "C,," -n "veldorane_quillport_root" -i /opt/x/cert/cacert.pem)"},
      {GetSystemInfoCommand(), "echo `uname -a` > /opt/x/log/SystemInfo.log"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.first, row.second);
}

}  // namespace
}  // namespace vsm
