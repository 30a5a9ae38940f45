// The update flow. The package lies beside the program and the extraction moves the working
// directory of the whole process, so each scenario runs in a copy of this test program inside a
// fresh folder, which is that copy's program folder.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "commands/service_update_flow.h"
#include "config/config_store.h"
#include "config/path_table.h"
#include "config/working_paths.h"
#include "core/http_param_request.h"
#include "core/manager_client.h"
#include "gtest/gtest.h"
#include "support/module_path.h"
#include "test_support/log_line.h"
#include "test_support/temp_dir.h"
#include "test_support/zip_writer.h"

namespace vsm {
namespace {

using testing::PathExists;
using testing::ReadFileBytes;
using testing::WriteFileBytes;

// In the test process: runs the current test in a copy of this program in a fresh folder and
// expects it to pass there; false. In the copy: true.
bool InProgramCopy() {
  if (std::getenv("VSM_IN_PROGRAM_COPY") != nullptr) return true;
  testing::TempDir folder;
  const std::string copy = folder.Join("update_flow_program");
  EXPECT_TRUE(WriteFileBytes(copy, ReadFileBytes("/proc/self/exe")));
  chmod(copy.c_str(), 0755);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  FILE* pipe = popen(("VSM_IN_PROGRAM_COPY=1 '" + copy + "' --gtest_filter='" +
                      test->test_suite_name() + "." + test->name() + "' 2>&1")
                         .c_str(),
                     "r");
  std::string output;
  char chunk[4096];
  for (size_t got; pipe != nullptr && (got = fread(chunk, 1, sizeof(chunk), pipe)) > 0;) {
    output.append(chunk, got);
  }
  EXPECT_EQ(pipe != nullptr ? pclose(pipe) : -1, 0) << output;
  EXPECT_NE(output.find("[  PASSED  ] 1 test."), std::string::npos) << output;
  return false;
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

enum class Package { kNone, kWithUpdater, kWithoutUpdater, kNotAZip };

struct Scenario {
  const char* name;
  std::string settings;   // lines of [VS] in VSConfiguration.ini besides LogLevel
  std::string parameter;  // the version, or "" for none
  Package package;
  bool answer;
  int code;
  std::string text;  // "%R" stands for the program folder; Error lines log it too
  std::string log;   // the lines before that
  bool touched;      // false: package and unpack folder stay as they were
  bool unpacked;     // the unpacked folder stays for the updater
};

const std::string kBegin =
    "H [Debug-0]: Create update process begin: %Rcache/VeldoraneService/VSUpdate\n";
const Scenario kScenarios[] = {
    {"busy", "IfUpdate=1\n", "16, 3, 0, 0", Package::kWithUpdater, false, -2373,
     "Veldorane Service is updating, please wait.", "", false, false},
    {"current", "VSVersion=16, 2, 6, 1212\n", "16, 3, 0, 0", Package::kWithUpdater, true, 0, "", "",
     false, false},
    {"missing", "", "", Package::kNone, false, -2405,
     "Failed to unzip file Cannot find the specified file \"%RService_.zip\" 2", "", true, false},
    {"not a zip", "", "17", Package::kNotAZip, false, -2405,
     "Failed to unzip file Cannot open %RService_17.zip or %RService_17.zip.zip 2", "", true,
     false},
    {"started", "IfUpdate=0\n", "17, 0", Package::kWithUpdater, true, 0, "",
     kBegin + "H [Info-0]: Create Update process succeed.\n", true, true},
    {"spawn fails", "IfUpdate=2\n", "17", Package::kWithoutUpdater, false, -2407,
     "Create update progress failed.", kBegin + "H [Debug-0]: Create update process failed 2\n",
     true, true},
};

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

class UpdateFlowTest : public ::testing::TestWithParam<Scenario> {};

TEST_P(UpdateFlowTest, AnswersAndLeavesTheFolderAsExpected) {
  if (!InProgramCopy()) return;
  const Scenario& s = GetParam();
  char root[kPathBufferSize];
  GetModuleDirectory(root);
  ASSERT_TRUE(WriteFileBytes(root + std::string("VSConfiguration.ini"),
                             "[VS]\nLogLevel=14\n" + s.settings));
  InitializeWorkingPaths(false);
  const std::string folder = GetCacheDirectory() + "VeldoraneService/";
  ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);  // what an earlier try left
  ASSERT_TRUE(WriteFileBytes(folder + "stale.txt", "earlier try"));
  const std::string package = root + ("Service_" + s.parameter + ".zip");
  // The updater records its arguments, and whether it got any environment.
  std::vector<testing::ZipEntry> entries = {
      {"notes/", ""},
      {"bin/service.so", "new service", 9},
      {"VSUpdate",
       "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$1\" \"$#\" \"${HOME-no environment}\" > "
       "\"${1}updater.txt\"\n"}};
  if (s.package == Package::kWithoutUpdater) entries.pop_back();
  if (s.package != Package::kNone) {
    ASSERT_TRUE(s.package == Package::kNotAZip ? WriteFileBytes(package, "not a zip")
                                               : testing::WriteZip(package, entries));
  }
  const size_t logStart = ReadFileBytes(GetServiceLogFile()).size();

  ManagerClient client;
  HttpParamRequest request(
      HostCall{1},
      "{\"id\":\"1\",\"method\":\"UpdateService\"" +
          (s.parameter.empty() ? "" : ",\"parameter\":[\"" + s.parameter + "\"]") + "}",
      nullptr, ByteBlock(), 0);
  ServiceUpdateFlow(&client).UpdateService(&request);

  const std::string text = Replace(s.text, "%R", root);
  EXPECT_EQ(request.GetResponse()->text,
            "{\n" +
                (s.code == 0 ? ""
                             : "   \"description\" : \"" + Replace(text, "\"", "\\\"") +
                                   "\",\n   \"exception\" : " + std::to_string(s.code) + ",\n") +
                "   \"id\" : \"1\",\n   \"method\" : \"UpdateService\",\n   \"result\" : [ " +
                (s.parameter.empty() ? "" : "\"" + s.parameter + "\", ") +
                (s.answer ? "true" : "false") + " ]\n}\n");
  const std::string log = Replace(s.log, "%R", root) +
                          (s.code == 0 ? "" : "H [Error-0]: " + text + " GetLastError = N.\n");
  std::string logged = testing::WithoutHeads(ReadFileBytes(GetServiceLogFile()).substr(logStart));
  for (size_t at = 0; (at = logged.find("GetLastError = ", at)) != std::string::npos;) {
    at += 15;
    logged.replace(at, logged.find('.', at) - at, "N");  // the error number varies
  }
  EXPECT_EQ(logged, log);
  EXPECT_EQ(PathExists(package), !s.touched);
  EXPECT_EQ(PathExists(folder + "stale.txt"), !s.touched);
  EXPECT_EQ(PathExists(folder), !s.touched || s.unpacked);
  if (s.unpacked) {
    EXPECT_EQ(ReadFileBytes(folder + "bin/service.so"), "new service");
    EXPECT_TRUE(PathExists(folder + "notes"));
    EXPECT_EQ(ReadConfigKey(kIfUpdateKey), "0");  // "2" went back to "0" when the spawn failed
  }
  if (s.unpacked && s.answer) {
    // The updater runs on its own; wait for its record, then collect it.
    const std::string record = root + std::string("updater.txt");
    for (int i = 0; i < 1000 && ReadFileBytes(record).find("environment\n") == std::string::npos;
         ++i) {
      usleep(10000);
    }
    EXPECT_EQ(ReadFileBytes(record), folder + "VSUpdate\n" + root + "\n1\nno environment\n");
    struct stat info = {};
    stat((folder + "VSUpdate").c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0777u);
    while (waitpid(-1, nullptr, 0) > 0) {
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, UpdateFlowTest, ::testing::ValuesIn(kScenarios),
                         [](const ::testing::TestParamInfo<Scenario>& info) {
                           return Replace(info.param.name, " ", "_");
                         });

TEST(UpdateFlowCompanions, OnlyTheLeadingNumberOfAVersionCounts) {
  testing::TempDir folder;
  ResetPathTableForTesting();
  BuildPathTable(folder.Join("prog"));
  const struct {
    const char* settings;
    const char* version;
    bool current;
  } cases[] = {
      {"VSVersion=16, 2, 6, 1212", "16, 3, 0, 0", true},
      {"VSVersion=16, 2, 6", "17, 0", false},
      {"", "1", false},  // "0" when absent
      {"VSVersion=16", "", false},
      {"VSVersion=16 2", "16", true},
      {"VSVersion= 16", "1", false},
      {"VSVersion=4294967297", "2", false},  // both are read as signed 32-bit numbers
  };
  ManagerClient client;
  ServiceUpdateFlow flow(&client);
  for (const auto& c : cases) {
    ASSERT_TRUE(WriteFileBytes(GetConfigFile(), "[VS]\n" + std::string(c.settings) + "\n"));
    EXPECT_EQ(flow.IsVersionCurrent(c.version), c.current) << c.settings << " / " << c.version;
  }
  for (const char* value : {"1", "01", " 1", "TRUE"}) {
    ASSERT_TRUE(WriteFileBytes(GetConfigFile(), "[VS]\nIfUpdate=" + std::string(value) + "\n"));
    EXPECT_EQ(flow.IsUpdating(), value == std::string("1")) << value;
  }
  EXPECT_TRUE(flow.VerifyUpdateFolder("any/folder\\\\"));

  // The package path is built in a 1024-byte buffer; a longer one ends the process.
  HttpParamRequest request(HostCall{1},
                           "{\"id\":\"1\",\"method\":\"UpdateService\",\"parameter\":[\"1" +
                               std::string(1100, 'x') + "\"]}",
                           nullptr, ByteBlock(), 0);
  EXPECT_DEATH(flow.UpdateService(&request), "overflows a buffer of 1024 bytes");
}

}  // namespace
}  // namespace vsm
