#include "host/dialog_command.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "config/path_table.h"

namespace vsm {
namespace {

TEST(DialogCommandTest, CommandLines) {
  BuildPathTable("/opt/x/prog");
  const std::pair<std::string, std::string> rows[] = {
      {GetDialogCommandWithText("a b"), "/opt/x/quillport_dialog 1 a b"},
      {GetDialogCommandWithText(nullptr), "/opt/x/quillport_dialog 1 "},
      {GetDialogCommandPlain(), "/opt/x/quillport_dialog 2"},
      {GetDialogCommandFull(5, -1, "say \"hi\""), "/opt/x/quillport_dialog 3 5 -1 \"say \"hi\"\""},
  };
  for (const auto& row : rows) EXPECT_EQ(row.first, row.second);
}

}  // namespace
}  // namespace vsm
