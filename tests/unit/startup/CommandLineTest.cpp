#include <gtest/gtest.h>

#include <utility>

#include "startup/CommandLine.h"

namespace trelv::modMain {
namespace {

using Arguments = std::vector<std::string>;
using Texts = std::vector<std::pair<std::string, std::string>>;

/// Twenty arguments, of which the last one is told.
const std::string kNineteen = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19";

Arguments parsed(const std::string& raw) {
  std::uint8_t count = 99;
  Arguments args{"left over"};
  EXPECT_TRUE(ParseCommandLine(raw, count, args));
  EXPECT_EQ(args.size(), count);
  return args;
}

TEST(CommandLine, BlanksAndTabsSeparate) {
  EXPECT_EQ((Arguments{"a", "b", "c"}), parsed("a b\tc"));
  EXPECT_EQ((Arguments{"a", "b"}), parsed("  a \t  b  "));
  EXPECT_EQ(Arguments{}, parsed(""));
  EXPECT_EQ(Arguments{}, parsed(" \t "));
}

TEST(CommandLine, QuotesGroupAndAreDropped) {
  EXPECT_EQ((Arguments{"a b"}), parsed("\"a b\""));
  EXPECT_EQ((Arguments{"INTEGRATEDRUN", "C:\\Programmi Lumo", "x"}),
            parsed("INTEGRATEDRUN \"C:\\Programmi Lumo\" x"));
  EXPECT_EQ((Arguments{"a\tb"}), parsed("\"a\tb\""));
  EXPECT_EQ((Arguments{"a", "b c "}), parsed("a \"b c ")) << "one that is never closed";
  EXPECT_EQ((Arguments{"C:\\a b\\", "c"}), parsed("\"C:\\a b\\\" c")) << "no escape";
}

TEST(CommandLine, QuoteInsideAWordSplitsIt) {
  EXPECT_EQ((Arguments{"ab", "cd"}), parsed("ab\"cd"));
  EXPECT_EQ((Arguments{"ab", "cd", "ef"}), parsed("ab\"cd\"ef"));
  EXPECT_EQ((Arguments{"a b", "c d"}), parsed("\"a b\"\"c d\""));
}

TEST(CommandLine, EmptyQuotesGiveNothingAndLaterPositionsShift) {
  EXPECT_EQ((Arguments{"a", "b"}), parsed("a \"\" b"));
  EXPECT_EQ(Arguments{}, parsed("\"\""));
}

TEST(CommandLine, TwentyArgumentsAreKeptWholeAndTheRestIsDropped) {
  Arguments twenty = parsed(kNineteen);
  ASSERT_EQ(19U, twenty.size());
  twenty.emplace_back("last one");
  EXPECT_EQ(twenty, parsed(kNineteen + " \"last one\""));
  EXPECT_EQ(twenty, parsed(kNineteen + " \"last one\"x y 23 24 25"));
}

TEST(CommandLine, OfThirtyTwoThousandCharactersIsRead) {
  const std::string longOne(31990, 'x');
  EXPECT_EQ((Arguments{"a", longOne, "b"}), parsed("a \"" + longOne + "\" b"));
}

TEST(ArgumentsOf, FollowTheProgramWithoutLeadingBlanks) {
  for (const auto& [commandLine, arguments] :
       Texts{{"\"C:\\Lumo x\\T.exe\" INTEGRATEDRUN \"a b\" ", "INTEGRATEDRUN \"a b\" "},
             {"\"C:\\T.exe\"    a", "a"},
             {"\"C:\\T.exe\"a", "a"},
             {"C:\\T.exe a b", "a b"},
             {"C:\\T.exe\ta", "\ta"},
             {"C:\\T.exe    a  b  ", "a  b  "},
             {"C:\\T.exe", ""},
             {"\"C:\\T.exe\"", ""},
             {"\"C:\\T.exe\"   ", ""},
             {"", ""},
             // A quote that is never closed.
             {"\"C:\\T.exe a b", ""},
             {"\"", ""}}) {
    EXPECT_EQ(arguments, argumentsOf(commandLine)) << commandLine;
  }
}

TEST(ArgumentsOf, FollowTheOwnPathAlsoWithBlanksAndWithoutQuotes) {
  const Arguments own{"C:\\PROGRA~1\\Lumo x\\TRELVM~1.EXE", "C:\\Program Files\\Lumo x\\Trelv.exe"};
  for (const auto& [commandLine, arguments] :
       Texts{{"C:\\Program Files\\Lumo x\\Trelv.exe INTEGRATEDRUN a", "INTEGRATEDRUN a"},
             {"c:\\program files\\LUMO X\\trelv.EXE  a", "a"},
             {"C:\\Program Files\\Lumo x\\Trelv INTEGRATEDRUN", "INTEGRATEDRUN"},
             {"C:\\PROGRA~1\\Lumo x\\TRELVM~1.EXE a", "a"},
             {"C:\\PROGRA~1\\Lumo x\\trelvm~1 a", "a"},
             {"C:\\Program Files\\Lumo x\\Trelv.exe", ""},
             {"C:\\Program Files\\Lumo x\\Trelv.exe\ta", "\ta"},
             {"\"C:\\Program Files\\Lumo x\\Trelv.exe\" a", "a"},
             // Another program's path.
             {"C:\\Program Files\\Lumo x\\Trelv.exe.bak a", "Files\\Lumo x\\Trelv.exe.bak a"},
             {"Trelv.exe a b", "a b"}}) {
    EXPECT_EQ(arguments, argumentsOf(commandLine, own)) << commandLine;
  }
  EXPECT_EQ("a", argumentsOf("C:\\T.exe a", {"", ""}));
}

TEST(ModeKeyword, IsTrimmedOfAnyCaseAndHasItsNumber) {
  for (const auto& [text, number] :
       std::vector<std::pair<std::string, int>>{{"INTEGRATEDRUN", 2},
                                                {"INTEGRATEDMAINTAIN", 3},
                                                {"INTERACTIVE", 4},
                                                {"STANDALONEINSTALL", 5},
                                                {"SINGLEINSTALL", 6},
                                                {"  integratedRun ", 2},
                                                {"singleinstall", 6},
                                                {"", 0},
                                                {"INTEGRATED", 0},
                                                {"INTEGRATEDRUNX", 0},
                                                {"\tINTEGRATEDRUN", 0}}) {
    EXPECT_EQ(static_cast<RunMode>(number), ConvertModeToNumber(text)) << text;
  }
  EXPECT_EQ(2, static_cast<int>(RunMode::IntegratedRun));
  EXPECT_EQ(3, static_cast<int>(RunMode::IntegratedMaintain));
  EXPECT_EQ(4, static_cast<int>(RunMode::Interactive));
  EXPECT_EQ(5, static_cast<int>(RunMode::StandaloneInstall));
  EXPECT_EQ(6, static_cast<int>(RunMode::SingleInstall));
}

}  // namespace
}  // namespace trelv::modMain
