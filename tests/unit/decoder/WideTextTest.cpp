#include <gtest/gtest.h>

#include <array>

#include "decoder/WideText.h"

namespace trelv::decoder {
namespace {

TEST(WideText, PairOfSurrogatesIsOneCharacterWhateverFollows) {
  constexpr std::array<wchar_t, 4> kPair{0xD83D, 0xDE00, L'a', 0};
  EXPECT_EQ(utf8Of(kPair.data()),
            "\xF0\x9F\x98\x80"
            "a");
}

TEST(WideText, LoneSurrogateStaysOne) {
  constexpr std::array<wchar_t, 3> kLone{0xD83D, L'a', 0};
  EXPECT_EQ(utf8Of(kLone.data()),
            "\xED\xA0\xBD"
            "a");
}

TEST(WideText, EachByteThatIsNoUtf8BecomesAMark) {
  EXPECT_EQ(wideOf("\xFF"
                   "\xFE"
                   "a"),
            L"\xFFFD\xFFFD"
            L"a");
}

}  // namespace
}  // namespace trelv::decoder
