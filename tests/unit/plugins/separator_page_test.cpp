#include "plugins/separator_page.h"

#include <gtest/gtest.h>

#include "base/path.h"
#include "base/text.h"
#include "fakes/temporary_folder.h"
#include "platform/services.h"

namespace quirepress {
namespace {

SeparatorFacts Facts() {
    SeparatorFacts facts;
    facts.path = "D:\\a\\b\\Re{port}\xC3\xA9&<1>.tar.pdf";
    facts.set = {"/in/one.pdf", "/in/two.pdf"};
    facts.pages = 12;
    facts.size = 1536;
    facts.now = {2026, 3, 1, 9, 5, 7};
    facts.modified = {2024, 12, 31, 23, 59, 58};
    facts.machine = "press";
    facts.user = "anna";
    return facts;
}

TEST(SeparatorPageTest, FillsEveryPlaceholder) {
    struct Case {
        const char* text;
        const char* filled;
    };
    for (const Case& at : {
             Case{"[FILENAME1],[FILENAME2],[FILENAME3],[FILENAME1]", "one.pdf,two.pdf,[FILENAME3],one.pdf"},
             Case{"[DATETIME:%Y-%m-%d %H:%M]", "2026-03-01 09:05"},
             Case{"[DATETIME:%A %d. %B, day %j {%%}]|[DATETIME:%y]", "Sunday 01. March, day 060 {%}|26"},
             Case{"[DATETIME:%Q][DATETIME:]", "Invalid Date & TimeInvalid Date & Time"},
             Case{"[DATETIME:%", "[DATETIME:%"},
             Case{"[MM/DD/YY] [HH:MM:SS]", "03/01/26 09:05:07"},
             Case{"[PAGES] [FILESIZEBYTES] [FILESIZEKB]", "12 1536 1.5"},
             Case{"[FILEMODIFIED %Y%m%d][FILECREATED %Y]", "20241231Invalid Date & Time"},
             Case{"[MACHINE] [USERNAME] [NOBODY] [filetitle]", "press anna [NOBODY] [filetitle]"},
         })
        EXPECT_EQ(FillSeparator(at.text, Facts(), SeparatorMarkup::kPlain), at.filled) << at.text;
}

// A name is text, whatever it would mean in the separator.
TEST(SeparatorPageTest, NamesStandInTheMarkupAsTheyAre) {
    SeparatorFacts facts = Facts();
    facts.path = "/d\\a/Re{port}\xC3\xA9\xF0\x9F\x98\x80&<1>.tar.pdf";
    const std::string text = "[FILETITLE]|[FILETITLENOEXT]|[DIRECTORY]|[FOLDERNAME]|[FULLFILENAME]";
    const std::string title = "Re{port}\xC3\xA9\xF0\x9F\x98\x80&<1>.tar";
    EXPECT_EQ(FillSeparator(text, facts, MarkupOf("x.txt")),
              title + ".pdf|" + title + "|/d\\a|" + std::string(FileTitle("/d\\a")) + "|" + facts.path);
    EXPECT_EQ(FillSeparator("[FILETITLENOEXT]", facts, MarkupOf("x.RTF")),
              "Re\\{port\\}\\u233?\\u-10179?\\u-8704?&<1>.tar");
    EXPECT_EQ(FillSeparator("[DIRECTORY]", facts, MarkupOf("x.rtf")), "/d\\\\a");
    EXPECT_EQ(FillSeparator("[FILETITLE]", facts, MarkupOf("x.Html")),
              "Re{port}\xC3\xA9\xF0\x9F\x98\x80&amp;&lt;1&gt;.tar.pdf");
    facts.set = {"/in/" + std::string(300, 'n')};
    EXPECT_EQ(FillSeparator("[FILENAME1]", facts, SeparatorMarkup::kPlain).size(), 254U);
}

TEST(SeparatorPageTest, WritesTheSeparatorOrSaysWhyNot) {
    TemporaryFolder folder;
    const Services services = MakeSystemServices();
    const std::string source = folder.Write("x.rtf", std::string("a\0[USERNAME]\r\n", 14));
    const std::string target = folder.Write("out.rtf", "an earlier one");
    std::string message;
    EXPECT_EQ(GenerateSeparator(*services.files, source, target, Facts(), message), 0);
    EXPECT_EQ(folder.Read("out.rtf"), std::string("a\0anna\r\n", 8));

    EXPECT_EQ(GenerateSeparator(*services.files, folder.PathOf("none.rtf"), target, Facts(), message), -1);
    EXPECT_EQ(message, "Can't read template file.");
    for (const std::string& bad : {source, folder.Path(), JoinPath(folder.Path(), "no/such/x.rtf")}) {
        message.clear();
        EXPECT_EQ(GenerateSeparator(*services.files, source, bad, Facts(), message), -1);
        EXPECT_EQ(message, "Can't write separator file.") << bad;
    }
    EXPECT_TRUE(Contains(folder.Read("x.rtf"), "[USERNAME]")) << "the template is left as it is";
}

}  // namespace
}  // namespace quirepress
