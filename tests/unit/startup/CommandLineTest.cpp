#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "startup/modMain.h"

namespace trelv::modMain {
namespace {

using Arguments = std::vector<std::string>;

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
}

TEST(CommandLine, EmptyLineHasNoArguments) {
  EXPECT_EQ(Arguments{}, parsed(""));
  EXPECT_EQ(Arguments{}, parsed(" \t "));
}

TEST(CommandLine, QuotesGroupAndAreDropped) {
  EXPECT_EQ((Arguments{"a b"}), parsed("\"a b\""));
  EXPECT_EQ((Arguments{"INTEGRATEDRUN", "C:\\Programmi Lumo", "x"}),
            parsed("INTEGRATEDRUN \"C:\\Programmi Lumo\" x"));
  EXPECT_EQ((Arguments{"a\tb"}), parsed("\"a\tb\""));
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

TEST(CommandLine, QuoteThatIsNeverClosedGroupsToTheEnd) {
  EXPECT_EQ((Arguments{"a", "b c "}), parsed("a \"b c "));
}

TEST(CommandLine, BackslashBeforeAQuoteIsAnOrdinaryCharacter) {
  EXPECT_EQ((Arguments{"C:\\a b\\", "c"}), parsed("\"C:\\a b\\\" c"));
}

TEST(CommandLine, TwentyArgumentsAreKeptAndTheRestIsDropped) {
  std::string raw;
  Arguments expected;
  for (int i = 1; i <= 25; ++i) {
    raw += "a" + std::to_string(i) + " ";
    if (i <= 20) {
      expected.push_back("a" + std::to_string(i));
    }
  }
  EXPECT_EQ(expected, parsed(raw));
  EXPECT_EQ(20U, parsed("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20").size());
}

TEST(CommandLine, TwentiethArgumentIsKeptWhole) {
  const Arguments args = parsed("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 \"last one\"x y");
  ASSERT_EQ(20U, args.size());
  EXPECT_EQ("last one", args.back());
}

TEST(CommandLine, OfThirtyTwoThousandCharactersIsRead) {
  const std::string longOne(31990, 'x');
  EXPECT_EQ((Arguments{"a", longOne, "b"}), parsed("a \"" + longOne + "\" b"));
}

TEST(ArgumentsOf, QuotedProgramIsTakenAway) {
  EXPECT_EQ("INTEGRATEDRUN \"a b\" ", argumentsOf("\"C:\\Lumo x\\T.exe\" INTEGRATEDRUN \"a b\" "));
}

TEST(ArgumentsOf, UnquotedProgramEndsAtItsFirstBlankOrTab) {
  EXPECT_EQ("a b", argumentsOf("C:\\T.exe a b"));
  EXPECT_EQ("\ta", argumentsOf("C:\\T.exe\ta"));
}

TEST(ArgumentsOf, LeadingBlanksAreLostAndOthersStay) {
  EXPECT_EQ("a  b  ", argumentsOf("C:\\T.exe    a  b  "));
  EXPECT_EQ("a", argumentsOf("\"C:\\T.exe\"    a"));
}

TEST(ArgumentsOf, ProgramAloneHasNone) {
  EXPECT_EQ("", argumentsOf("C:\\T.exe"));
  EXPECT_EQ("", argumentsOf("\"C:\\T.exe\""));
  EXPECT_EQ("", argumentsOf("\"C:\\T.exe\"   "));
  EXPECT_EQ("", argumentsOf(""));
}

TEST(ArgumentsOf, ProgramWhoseQuoteIsNeverClosedHasNone) {
  EXPECT_EQ("", argumentsOf("\"C:\\T.exe a b"));
  EXPECT_EQ("", argumentsOf("\""));
}

TEST(ArgumentsOf, TextAtTheClosingQuoteIsAnArgument) {
  EXPECT_EQ("a", argumentsOf("\"C:\\T.exe\"a"));
}

TEST(ModeKeyword, OfEachModeIsKnown) {
  EXPECT_EQ(RunMode::IntegratedRun, ConvertModeToNumber("INTEGRATEDRUN"));
  EXPECT_EQ(RunMode::IntegratedMaintain, ConvertModeToNumber("INTEGRATEDMAINTAIN"));
  EXPECT_EQ(RunMode::Interactive, ConvertModeToNumber("INTERACTIVE"));
  EXPECT_EQ(RunMode::StandaloneInstall, ConvertModeToNumber("STANDALONEINSTALL"));
  EXPECT_EQ(RunMode::SingleInstall, ConvertModeToNumber("SINGLEINSTALL"));
}

TEST(ModeKeyword, HasItsNumber) {
  EXPECT_EQ(2, static_cast<int>(ConvertModeToNumber("INTEGRATEDRUN")));
  EXPECT_EQ(3, static_cast<int>(ConvertModeToNumber("INTEGRATEDMAINTAIN")));
  EXPECT_EQ(4, static_cast<int>(ConvertModeToNumber("INTERACTIVE")));
  EXPECT_EQ(5, static_cast<int>(ConvertModeToNumber("STANDALONEINSTALL")));
  EXPECT_EQ(6, static_cast<int>(ConvertModeToNumber("SINGLEINSTALL")));
  EXPECT_EQ(0, static_cast<int>(ConvertModeToNumber("")));
}

TEST(ModeKeyword, IsTrimmedAndOfAnyCase) {
  EXPECT_EQ(RunMode::IntegratedRun, ConvertModeToNumber("  integratedRun "));
  EXPECT_EQ(RunMode::SingleInstall, ConvertModeToNumber("singleinstall"));
}

TEST(ModeKeyword, OfNothingElseIsKnown) {
  EXPECT_EQ(RunMode::None, ConvertModeToNumber("INTEGRATED"));
  EXPECT_EQ(RunMode::None, ConvertModeToNumber("INTEGRATEDRUNX"));
  EXPECT_EQ(RunMode::None, ConvertModeToNumber("\tINTEGRATEDRUN"));
}

}  // namespace
}  // namespace trelv::modMain
