// The update flow. The package lies beside the program and the extraction moves the working
// directory of the whole process, so each scenario runs in a copy of this test program inside a
// fresh folder, which is that copy's program folder.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
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
using testing::TempDir;
using testing::WriteFileBytes;

constexpr char kInProgramCopy[] = "VSM_UPDATE_FLOW_PROGRAM_COPY";

// In the test process: runs the current test in a copy of this program in a fresh folder and
// expects it to pass there; false. In the copy: true.
bool InProgramCopy() {
  if (std::getenv(kInProgramCopy) != nullptr) return true;
  TempDir folder;
  const std::string copy = folder.Join("update_flow_program");
  EXPECT_TRUE(WriteFileBytes(copy, ReadFileBytes("/proc/self/exe")));
  chmod(copy.c_str(), 0755);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string command = std::string(kInProgramCopy) + "=1 '" + copy + "' --gtest_filter='" +
                              test->test_suite_name() + "." + test->name() + "' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::string output;
  char chunk[4096];
  for (size_t got; pipe != nullptr && (got = fread(chunk, 1, sizeof(chunk), pipe)) > 0;) {
    output.append(chunk, got);
  }
  const int status = pipe != nullptr ? pclose(pipe) : -1;
  EXPECT_EQ(status, 0) << output;
  EXPECT_NE(output.find("[  PASSED  ] 1 test."), std::string::npos) << output;
  return false;
}

// `log` without line heads, and with the error number behind Error lines masked.
std::string LogLines(const std::string& log) {
  std::string lines = testing::WithoutHeads(log);
  const std::string mark = "GetLastError = ";
  for (size_t at = 0; (at = lines.find(mark, at)) != std::string::npos;) {
    at += mark.size();
    size_t end = at;
    while (end < lines.size() && lines[end] != '.') ++end;
    lines.replace(at, end - at, "N");
  }
  return lines;
}

std::string Answer(const std::string& parameter, bool result, int code, const std::string& text) {
  const std::string error = code == 0
                                ? ""
                                : "   \"description\" : \"" + text +
                                      "\",\n   \"exception\" : " + std::to_string(code) + ",\n";
  return "{\n" + error +
         "   \"id\" : \"1\",\n   \"method\" : \"UpdateService\",\n   \"result\" : [ " +
         (parameter.empty() ? "" : "\"" + parameter + "\", ") + (result ? "true" : "false") +
         " ]\n}\n";
}

enum class Package { kNone, kWithUpdater, kWithoutUpdater, kNotAZip };

struct Scenario {
  const char* name;
  std::string settings;   // lines of [VS] in VSConfiguration.ini besides LogLevel
  std::string parameter;  // the version, or "" for none
  Package package;
  bool answer;
  int code;
  std::string text;  // "%R" stands for the program folder
  std::string log;
  bool packageStays;
  bool folderStays;  // the unpacked folder stays for the updater
};

std::string Expand(std::string text, const std::string& root) {
  for (size_t at; (at = text.find("%R")) != std::string::npos;) text.replace(at, 2, root);
  return text;
}

// Records the updater's arguments and whether it got any environment.
constexpr char kFakeUpdater[] =
    "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$1\" \"$#\" \"${HOME-no environment}\" > "
    "\"${1}updater.txt\"\n";

const Scenario kScenarios[] = {
    {"busy", "IfUpdate=1\n", "16, 3, 0, 0", Package::kWithUpdater, false, -2373,
     "Veldorane Service is updating, please wait.",
     "H [Error-0]: Veldorane Service is updating, please wait. GetLastError = N.\n", true, false},
    {"current", "VSVersion=16, 2, 6, 1212\n", "16, 3, 0, 0", Package::kWithUpdater, true, 0, "", "",
     true, false},
    {"missing", "", "", Package::kNone, false, -2405,
     "Failed to unzip file Cannot find the specified file \\\"%RService_.zip\\\" 2",
     "H [Error-0]: Failed to unzip file Cannot find the specified file \"%RService_.zip\" 2 "
     "GetLastError = N.\n",
     false, false},
    {"not a zip", "", "17", Package::kNotAZip, false, -2405,
     "Failed to unzip file Cannot open %RService_17.zip or %RService_17.zip.zip 2",
     "H [Error-0]: Failed to unzip file Cannot open %RService_17.zip or %RService_17.zip.zip 2 "
     "GetLastError = N.\n",
     false, false},
    {"started", "IfUpdate=0\n", "17, 0", Package::kWithUpdater, true, 0, "",
     "H [Debug-0]: Create update process begin: %Rcache/VeldoraneService/VSUpdate\n"
     "H [Info-0]: Create Update process succeed.\n",
     false, true},
    {"spawn fails", "IfUpdate=2\n", "17", Package::kWithoutUpdater, false, -2407,
     "Create update progress failed.",
     "H [Debug-0]: Create update process begin: %Rcache/VeldoraneService/VSUpdate\n"
     "H [Debug-0]: Create update process failed 2\n"
     "H [Error-0]: Create update progress failed. GetLastError = N.\n",
     false, true},
};

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

class UpdateFlowTest : public ::testing::TestWithParam<Scenario> {};

TEST_P(UpdateFlowTest, AnswersAndLeavesTheFolderAsExpected) {
  if (!InProgramCopy()) return;
  const Scenario& s = GetParam();
  char root[kPathBufferSize];
  GetModuleDirectory(root);
  ASSERT_TRUE(WriteFileBytes(std::string(root) + "VSConfiguration.ini",
                             "[VS]\nLogLevel=14\n" + s.settings));
  InitializeWorkingPaths(false);
  const std::string folder = GetCacheDirectory() + "VeldoraneService/";
  // What an earlier try left must be gone before the package is unpacked.
  ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
  ASSERT_TRUE(WriteFileBytes(folder + "stale.txt", "earlier try"));
  const std::string package = std::string(root) + "Service_" + s.parameter + ".zip";
  std::vector<testing::ZipEntry> entries = {{"notes/", ""}, {"bin/service.so", "new service", 9}};
  if (s.package == Package::kWithUpdater) entries.push_back({"VSUpdate", kFakeUpdater, 0});
  if (s.package == Package::kNotAZip) {
    ASSERT_TRUE(WriteFileBytes(package, "not a zip"));
  }
  if (s.package == Package::kWithUpdater || s.package == Package::kWithoutUpdater) {
    ASSERT_TRUE(testing::WriteZip(package, entries));
  }
  const size_t logStart = ReadFileBytes(GetServiceLogFile()).size();

  ManagerClient client;
  const std::string command =
      "{\"id\":\"1\",\"method\":\"UpdateService\"" +
      (s.parameter.empty() ? std::string() : ",\"parameter\":[\"" + s.parameter + "\"]") + "}";
  HttpParamRequest request(1, 0, command, 1, 0, "http://127.0.0.1", nullptr, nullptr, 0, 0, 0,
                           nullptr, 0, 0);
  ServiceUpdateFlow(&client).UpdateService(&request);

  EXPECT_EQ(request.GetResponse()->text,
            Answer(s.parameter, s.answer, s.code, Expand(s.text, root)));
  EXPECT_EQ(LogLines(ReadFileBytes(GetServiceLogFile()).substr(logStart)), Expand(s.log, root));
  EXPECT_EQ(PathExists(package), s.packageStays);
  // Where the package stays, nothing was touched.
  EXPECT_EQ(PathExists(folder + "stale.txt"), s.packageStays);
  EXPECT_EQ(PathExists(folder), s.packageStays || s.folderStays);
  if (s.folderStays) {
    EXPECT_EQ(ReadFileBytes(folder + "bin/service.so"), "new service");
    EXPECT_TRUE(PathExists(folder + "notes"));
    EXPECT_EQ(ReadConfigKey(kIfUpdateKey), "0");  // "2" went back to "0" when the spawn failed
  }
  if (s.package == Package::kWithUpdater && s.answer && !s.packageStays) {
    // The updater runs on its own; wait for what it writes, and collect it.
    const std::string record = std::string(root) + "updater.txt";
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
                           std::string name = info.param.name;
                           for (char& c : name) c = c == ' ' ? '_' : c;
                           return name;
                         });

class UpdateFlowCompanionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetPathTableForTesting();
    BuildPathTable(folder_.Join("prog"));
  }
  TempDir folder_;
};

TEST_F(UpdateFlowCompanionTest, OnlyTheLeadingNumberOfAVersionCounts) {
  const struct {
    const char* installed;  // nullptr: no VSVersion, which reads as "0"
    const char* version;
    bool current;
  } cases[] = {
      {"16, 2, 6, 1212", "16, 3, 0, 0", true},
      {"16, 2, 6, 1212", "17, 0, 0, 0", false},
      {"16, 2, 6, 1212", "15", true},
      {nullptr, "1", false},
      {nullptr, "0", true},
      {"16", "", false},
      {"16 2", "16", true},
      {" 16", "1", false},
      {"16", "-5", true},
      {"16", "abc", true},
      {"4294967297", "2", false},  // both are read as signed 32-bit numbers
  };
  ManagerClient client;
  ServiceUpdateFlow flow(&client);
  for (const auto& c : cases) {
    ASSERT_TRUE(WriteFileBytes(
        GetConfigFile(),
        c.installed == nullptr ? "[VS]\n" : "[VS]\nVSVersion=" + std::string(c.installed) + "\n"));
    EXPECT_EQ(flow.IsVersionCurrent(c.version), c.current)
        << (c.installed ? c.installed : "none") << " / " << c.version;
  }
  for (const auto& [value, updating] :
       {std::pair<const char*, bool>{"1", true}, {"01", false}, {" 1", false}, {"TRUE", false}}) {
    ASSERT_TRUE(WriteFileBytes(GetConfigFile(), "[VS]\nIfUpdate=" + std::string(value) + "\n"));
    EXPECT_EQ(flow.IsUpdating(), updating) << value;
  }
  EXPECT_TRUE(flow.VerifyUpdateFolder("any/folder\\\\"));
}

TEST_F(UpdateFlowCompanionTest, AnOverlongPackagePathEndsTheProcess) {
  ManagerClient client;
  const std::string command = "{\"id\":\"1\",\"method\":\"UpdateService\",\"parameter\":[\"1" +
                              std::string(1100, 'x') + "\"]}";
  HttpParamRequest request(1, 0, command, 1, 0, "", nullptr, nullptr, 0, 0, 0, nullptr, 0, 0);
  EXPECT_DEATH(ServiceUpdateFlow(&client).UpdateService(&request),
               "overflows a buffer of 1024 bytes");
}

}  // namespace
}  // namespace vsm
