#include "protocol/url_command_encoder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <string>

#include "config/log_writer.h"
#include "config/module_identity.h"
#include "config/path_table.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"

namespace vsm {
namespace {

TEST(UrlCommandEncoder, ParsesQueriesLiterally) {
  const std::pair<std::string, UrlQuery> rows[] = {
      {"", {}},
      {"a=1&a=2", {{"a", "1"}}},
      {"a&b=2", {{"b", "2"}}},
      {"=x", {{"", "x"}}},
      {"id=1&", {{"id", "1"}}},
      {"id=a%20b&p=[1,2]&x=y=z&&k=", {{"id", "a%20b"}, {"p", "[1,2]"}, {"x", "y=z"}, {"k", ""}}},
      {"A=1&a=+2 ", {{"A", "1"}, {"a", "+2 "}}},
  };
  for (const auto& [query, map] : rows) EXPECT_EQ(UrlCommandEncoder().ParseUrlQuery(query), map);
}

// Each translator's whole text and the log lines it writes (heads replaced by "H ").
TEST(UrlCommandEncoder, TranslatesAndLogs) {
  testing::TempDir dir;
  BuildPathTable(dir.Join("prog"));
  mkdir(dir.Join("log").c_str(), 0755);
  testing::WriteFileBytes(dir.Join("VSConfiguration.ini"), "[VS]\nLogLevel=14\n");
  SetWorkMode(0);
  const UrlCommandEncoder encoder;
  using Translate = std::function<std::string(const std::string&)>;
  const Translate method = [&](const std::string& q) { return encoder.EncodeMethodUrl("Foo", q); };
  const Translate file = [&](const std::string& q) { return encoder.EncodeFileUrl(q); };
  const Translate thumbnail = [&](const std::string& q) { return encoder.EncodeThumbnailUrl(q); };
  const Translate image = [&](const std::string& q) { return encoder.EncodeImageUrl(q); };
  const std::string ok = "H [Debug-0]: Encode url succeed. cmd = [";
  auto styled = [](const std::string& id, const std::string& parameter) {
    return "{\n   \"id\" : \"" + id + "\",\n   \"method\" : \"GetImageByIndex\"" +
           (parameter.empty() ? "" : ",\n   \"parameter\" : " + parameter) + "\n}\n";
  };
  struct Row {
    const Translate* translate;
    std::string query, text, log;
  };
  const Row rows[] = {
      {&method, "id=7&p=[1,2]", "{\"id\":\"7\",\"method\":\"Foo\",\"parameter\":[1,2]}",
       ok + "{\"id\":\"7\",\"method\":\"Foo\",\"parameter\":[1,2]}].\n"},
      {&method, "p=&id=a\"b%20", "{\"id\":\"a\"b%20\",\"method\":\"Foo\"}",
       ok + "{\"id\":\"a\"b%20\",\"method\":\"Foo\"}].\n"},
      {&method, "p=1", "", ""},
      {&method, "", "",
       "H [Error-0]: Encode url failed. method=Foo, params = []. GetLastError = 0.\n"},
      {&file, "a.png",
       "{\n   \"id\" : \"0\",\n   \"method\" : \"GetFile\",\n   \"parameter\" : [ \"a.png\" ]\n}\n",
       ok + "{\n   \"id\" : \"0\",\n   \"method\" : \"GetFile\",\n   \"parameter\" : [ \"a.png\" "
            "]\n}\n].\n"},
      {&thumbnail, "id=1&index=3&thumbnail=true", styled("1", "[ 3, true ]"),
       ok + styled("1", "[ 3, true ]") + "].\n"},
      {&thumbnail, "id=1&index=x&thumbnail=TRUE", styled("1", "[ 0, false ]"),
       ok + styled("1", "[ 0, false ]") + "].\n"},
      {&thumbnail, "id=1&index=2", "",
       "H [Error-0]: Parsed id = [1], index = [2], thumbnail = []. GetLastError = 0.\n"},
      {&thumbnail, "", "", ""},
      {&image, "id=1&webcam=2", styled("1", "[ 2 ]"), ok + styled("1", "[ 2 ]") + "].\n"},
      {&image, "webcam=5&act=-4&height=3x&width=99999999999&index=1&id=i",
       styled("i", "[ 1, 99999999999, 3, -4, 5 ]"),
       ok + styled("i", "[ 1, 99999999999, 3, -4, 5 ]") + "].\n"},
      {&image, "id=1&index=", styled("1", ""), ok + styled("1", "") + "].\n"},
      {&image, "index=4", "",
       "H [Error-0]: Invalid url: id = [], index = [4]. GetLastError = 0.\n"},
      {&image, "", "", ""},
  };
  const std::string log = dir.Join("log/vss.log");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.query);
    remove(log.c_str());
    errno = 0;
    EXPECT_EQ((*row.translate)(row.query), row.text);
    EXPECT_EQ(testing::WithoutHeads(testing::ReadFileBytes(log)), row.log);
  }
}

}  // namespace
}  // namespace vsm
