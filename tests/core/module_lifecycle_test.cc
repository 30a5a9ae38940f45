#include "core/module_lifecycle.h"

#include <gtest/gtest.h>

#include <cstring>

#include "config/module_identity.h"
#include "config/path_table.h"
#include "core/virtual_manager_client.h"
#include "support/event.h"
#include "vsm.h"

namespace vsm {
namespace {

TEST(ModuleLifecycle, ActionsAnswerTheirResults) {
  struct Row {
    unsigned action;
    int result;
  } rows[] = {{1, 0}, {2, 1}, {3, 1}, {5, 0}, {6, 0}, {0xFFFFFFFFu, 0}};
  for (const Row& row : rows) {
    EXPECT_EQ(DoAction(row.action, "first", "second", 9), row.result) << row.action;
  }
  // None of those started the module or stored anything.
  EXPECT_EQ(GetRootDirectory(), "");
  EXPECT_EQ(GetSecondActionText(), "");
  EXPECT_EQ(GetEventNameInstance(), 0);
  EXPECT_EQ(GetWorkMode(), 0u);
}

TEST(ModuleLifecycle, StartStoresTheArgumentsAfterStartUp) {
  EXPECT_EQ(DoAction(0, "/host/program", "second text", 42), 1);
  EXPECT_NE(GetRootDirectory(), "");  // from this program's own path, not the argument
  EXPECT_EQ(GetFirstActionText(), "/host/program");
  EXPECT_EQ(GetSecondActionText(), "second text");
  EXPECT_EQ(GetEventNameInstance(), 42);
  // Null texts keep what is there; the instance number is stored whatever it is.
  EXPECT_EQ(DoAction(0, nullptr, nullptr, 0), 1);
  EXPECT_EQ(GetFirstActionText(), "/host/program");
  EXPECT_EQ(GetSecondActionText(), "second text");
  EXPECT_EQ(GetEventNameInstance(), 0);
}

TEST(ModuleLifecycle, ActionFourSetsWorkModeThreeForGood) {
  EXPECT_EQ(DoAction(4, nullptr, nullptr, 1), 1);
  EXPECT_EQ(GetWorkMode(), 3u);
  EXPECT_EQ(DoAction(0, nullptr, nullptr, 1), 1);
  EXPECT_EQ(GetWorkMode(), 3u);
}

TEST(ModuleLifecycle, ActionThreeDeletesTheSingleton) {
  VirtualManagerClient::GetInstance()->AddFileToWhiteList("/kept");
  EXPECT_EQ(DoAction(3, nullptr, nullptr, 0), 1);
  EXPECT_EQ(DoAction(3, nullptr, nullptr, 0), 1);
  EXPECT_EQ(Reserved("fileInQPTWhiteList", "/kept", nullptr), -1);
  EXPECT_EQ(GetWaitTimeout(), 1);  // a fresh singleton
  VirtualManagerClient::DestroyInstance();
}

TEST(ModuleLifecycle, ConstantExports) {
  EXPECT_EQ(BuildVersionDescription(), "qwasm2_16261212");
  char version[32];
  std::memset(version, 'x', sizeof(version));
  EXPECT_EQ(GetVersionDesc(nullptr), 16);
  EXPECT_EQ(GetVersionDesc(version), 16);
  EXPECT_STREQ(version, "qwasm2_16261212");
  EXPECT_EQ(version[16], 'x');
  char alias[5] = {'x', 'x', 'x', 'x', 'x'};
  EXPECT_EQ(GetAlias(nullptr), 4);
  EXPECT_EQ(GetAlias(alias), 4);
  EXPECT_EQ(std::memcmp(alias, "vsm\0x", 5), 0);
  unsigned port = 0;
  EXPECT_EQ(GetPorts(0, &port), 1);
  EXPECT_EQ(port, 18625u);
  EXPECT_EQ(GetPorts(200, &port), 1);
  EXPECT_EQ(port, 18626u);
  EXPECT_EQ(GetPorts(1, nullptr), 1);
  CloseWebSocket(12345);
}

}  // namespace
}  // namespace vsm
