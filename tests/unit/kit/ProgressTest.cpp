#include <gtest/gtest.h>

#include "kit/Progress.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {
namespace {

TEST(Progress, EachLineCoversTheLastOneAndTheEndLeavesNone) {
  FakeConsole console;
  {
    kit::Progress progress(console, true);
    progress.tell("una riga lunga");
    progress.tell("corta");
    progress.tell("più lunga");
    EXPECT_EQ(console.errors, "\runa riga lunga\rcorta         \rpiù lunga");
    console.errors.clear();
  }
  EXPECT_EQ(console.errors, "\r          \r");
}

TEST(Progress, IsForPeopleAlone) {
  FakeConsole console;
  { kit::Progress(console, false).tell("lavoro"); }
  EXPECT_EQ(console.errors, "");
}

}  // namespace
}  // namespace trelv::tests
