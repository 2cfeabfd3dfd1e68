#include "base/command_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using Words = std::vector<std::string>;

TEST(CommandWords, AreTakenApartAtBlanksOutsideOfQuotationMarks) {
    Words words;
    ASSERT_TRUE(
        SplitWords(R"(  soffice  --outdir %d "Text (encoded):UTF8" 'a "b"' x"y z"'w'	"" )", words));
    EXPECT_THAT(words,
                ElementsAre("soffice", "--outdir", "%d", "Text (encoded):UTF8", "a \"b\"", "xy zw", ""));
    ASSERT_TRUE(SplitWords(R"("a \"b\" \\ \n" C:\x\y.exe 'it\')", words));
    EXPECT_THAT(words, ElementsAre(R"(a "b" \ \n)", R"(C:\x\y.exe)", R"(it\)"));
    ASSERT_TRUE(SplitWords(" \t ", words));
    EXPECT_THAT(words, ElementsAre());
}

TEST(CommandWords, StayAsTheyWereWhenAMarkIsNotClosed) {
    for (const char* line : {"a \"b", "'", "a'b\"", R"("a\")"}) {
        Words words = {"before"};
        EXPECT_FALSE(SplitWords(line, words)) << line;
        EXPECT_THAT(words, ElementsAre("before")) << line;
    }
}

TEST(CommandWords, JoinedCanBeTakenApartAgain) {
    const Words words = {"a", "", "b c", "it's", "\"q\" \\", "$(touch x)", "\\", "%1"};
    Words again;
    ASSERT_TRUE(SplitWords(JoinWords(words), again));
    EXPECT_EQ(again, words);
}

TEST(FileAddress, CodesWhatHasAMeaningInAddresses) {
    EXPECT_EQ(FileAddress("/a b/50%#?.html"), "file:///a%20b/50%25%23%3F.html");
    EXPECT_EQ(FileAddress("/\xC3\xA4;$(x)\n"), "file:///%C3%A4%3B%24%28x%29%0A");
    EXPECT_EQ(FileAddress("C:/x.html"), "file:///C:/x.html");
}

}  // namespace
}  // namespace quirepress
