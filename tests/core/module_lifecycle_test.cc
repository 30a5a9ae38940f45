#include "core/module_lifecycle.h"

#include <gtest/gtest.h>

#include "config/module_identity.h"
#include "config/path_table.h"
#include "core/virtual_manager_client.h"
#include "support/event.h"
#include "vsm.h"

namespace vsm {
namespace {

TEST(ModuleLifecycle, StartStoresTheArgumentsAfterStartUp) {
  for (unsigned action : {1u, 2u, 3u, 5u}) DoAction(action, "/host/program", "second", 9);
  EXPECT_EQ(GetRootDirectory() + GetSecondActionText(), "");  // none of those started anything
  EXPECT_EQ(GetEventNameInstance(), 0);
  EXPECT_EQ(DoAction(0, "/host/program", "second text", 42), 1);
  EXPECT_NE(GetRootDirectory(), "");  // from this program's own path, not the argument
  EXPECT_EQ(GetFirstActionText(), "/host/program");
  EXPECT_EQ(GetSecondActionText(), "second text");
  EXPECT_EQ(GetEventNameInstance(), 42);
  // Null texts keep what is there; the instance number is stored whatever it is.
  EXPECT_EQ(DoAction(4, nullptr, nullptr, 0), 1);
  EXPECT_EQ(GetFirstActionText() + "|" + GetSecondActionText(), "/host/program|second text");
  EXPECT_EQ(GetEventNameInstance(), 0);
  EXPECT_EQ(GetWorkMode(), 3u);
  EXPECT_EQ(DoAction(0, nullptr, nullptr, 0), 1);
  EXPECT_EQ(GetWorkMode(), 3u);  // action 4's work mode stays
  SetWorkMode(0);
}

TEST(ModuleLifecycle, TearDownLeavesAFreshSingletonForTheNextCall) {
  VirtualManagerClient::GetInstance()->AddFileToWhiteList("/kept");
  EXPECT_EQ(DoAction(3, nullptr, nullptr, 0), 1);
  EXPECT_EQ(DoAction(3, nullptr, nullptr, 0), 1);
  EXPECT_EQ(Reserved("fileInQPTWhiteList", "/kept", nullptr), -1);
  EXPECT_EQ(BuildVersionDescription(), "qwasm2_16261212");
  VirtualManagerClient::DestroyInstance();
}

}  // namespace
}  // namespace vsm
