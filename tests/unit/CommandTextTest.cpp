// The word splitter and the strict integer reader shared by the text-command languages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CommandText.h"

namespace sysctrlservice {
namespace {

struct SplitCase {
    std::string line;
    std::vector<std::string> words;
};

void PrintTo(const SplitCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.line);
}

class SplitCommandWords : public ::testing::TestWithParam<SplitCase> {};

TEST_P(SplitCommandWords, CutsAtBlanksAndKeepsCommas) {
    std::vector<std::string> words = {"left", "over"};
    splitCommandWords(GetParam().line, words);
    EXPECT_EQ(words, GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SplitCommandWords,
    ::testing::Values(SplitCase{"", {}}, SplitCase{"   ", {}},
                      SplitCase{"  startOpc   3  ", {"startOpc", "3"}},
                      SplitCase{"a,b", {"a", ",", "b"}}, SplitCase{"a, b", {"a", ",", "b"}},
                      SplitCase{",,", {",", ","}}, SplitCase{"startOpc\t1", {"startOpc\t1"}},
                      SplitCase{"x\ny z", {"x\ny", "z"}},
                      SplitCase{std::string("a\0b c", 5), {std::string("a\0b", 3), "c"}},
                      SplitCase{"grüße 1", {"grüße", "1"}}));

TEST(SplitCommandWordsLarge, MegabyteOfCommasGivesOneWordEach) {
    std::vector<std::string> words;
    splitCommandWords(std::string(1 << 20, ','), words);
    ASSERT_EQ(words.size(), 1u << 20);
    EXPECT_EQ(words.front(), ",");
    EXPECT_EQ(words.back(), ",");
}

struct IntCase {
    std::string word;
    bool valid;
    int32_t value;
};

void PrintTo(const IntCase& c, std::ostream* os) {
    *os << ::testing::PrintToString(c.word);
}

class ParseInt32 : public ::testing::TestWithParam<IntCase> {};

TEST_P(ParseInt32, AcceptsOnlyWholeDecimalIntegersInRange) {
    int32_t value = 12345;
    EXPECT_EQ(parseInt32(GetParam().word, value), GetParam().valid) << GetParam().word;
    EXPECT_EQ(value, GetParam().valid ? GetParam().value : 12345);
}

INSTANTIATE_TEST_SUITE_P(
    Words, ParseInt32,
    ::testing::Values(IntCase{"0", true, 0}, IntCase{"+0", true, 0}, IntCase{"-0", true, 0},
                      IntCase{"42", true, 42}, IntCase{"+42", true, 42}, IntCase{"-42", true, -42},
                      IntCase{"007", true, 7}, IntCase{"2147483647", true, 2147483647},
                      IntCase{"-2147483648", true, INT32_MIN}, IntCase{"2147483648", false, 0},
                      IntCase{"-2147483649", false, 0}, IntCase{"99999999999999999999", false, 0},
                      IntCase{"", false, 0}, IntCase{"+", false, 0}, IntCase{"-", false, 0},
                      IntCase{"+-1", false, 0}, IntCase{"abc", false, 0}, IntCase{"0x10", false, 0},
                      IntCase{"1.5", false, 0}, IntCase{"1e3", false, 0}, IntCase{"5a", false, 0},
                      IntCase{" 5", false, 0}, IntCase{"5 ", false, 0}, IntCase{",", false, 0},
                      IntCase{"\t5", false, 0}));

}  // namespace
}  // namespace sysctrlservice
