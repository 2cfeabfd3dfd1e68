#include "platform/registered_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using Classes = std::map<std::string, std::string>;

std::string FindIn(const Classes& classes, std::string_view extension) {
    return FindPrintLine(extension, [&](const std::string& key) {
        const auto found = classes.find(key);
        return found == classes.end() ? std::string() : found->second;
    });
}

TEST(RegisteredCommand, IsThatOfTheClassOfTheExtension) {
    const Classes classes = {{".doc", "Word.8"},
                             {"Word.8\\shell\\print\\command", "word.exe /p \"%1\""},
                             {".x", "None"},
                             {"\\shell\\print\\command", "trap.exe"}};
    EXPECT_EQ(FindIn(classes, ".doc"), "word.exe /p \"%1\"");
    EXPECT_EQ(FindIn(classes, ".x"), "");
    EXPECT_EQ(FindIn(classes, ".y"), "");
    EXPECT_EQ(FindIn(classes, ""), "");
}

TEST(RegisteredCommand, OfAPdfIsLookedForInTheViewersClassesInTheirOrder) {
    Classes classes = {{"AcroExch.Document.11\\shell\\Print\\command", "last"}};
    EXPECT_EQ(FindIn(classes, ".PDF"), "last");
    for (const char* next :
         {"AcroExch.Document.7\\shell\\Print\\command", "AcroExch.Document\\shell\\Print\\command",
          "AcroExch.Document.10\\shell\\print\\command", "AcroExch.Document.9\\shell\\print\\command",
          "AcroExch.Document\\shell\\print\\command"}) {
        classes[next] = next;
        EXPECT_EQ(FindIn(classes, ".pdf"), next);
    }
    classes[".pdf"] = "Viewer";
    EXPECT_EQ(FindIn(classes, ".pdf"), "AcroExch.Document\\shell\\print\\command");
    classes["Viewer\\shell\\print\\command"] = "own";
    EXPECT_EQ(FindIn(classes, ".pdf"), "own");
    EXPECT_EQ(FindIn(classes, ".doc"), "");
}

TEST(RegisteredCommand, IsFilledInWithTheQuotedPath) {
    const auto fill = [](std::string_view line, std::string_view path = "C:\\a b\\x.doc") {
        ProcessRequest request;
        const bool isFilled = FillCommandLine(line, path, request);
        return isFilled ? request.arguments[0] + "|" + request.rawArguments : "refused";
    };
    const std::string quoted = "\"C:\\a b\\x.doc\"";
    EXPECT_EQ(fill("word.exe /p \"%1\" /x"), "word.exe|/p " + quoted + " /x");
    EXPECT_EQ(fill("word.exe /p %1"), "word.exe|/p " + quoted);
    EXPECT_EQ(fill("\"C:\\Program Files\\W\\w.exe\" %1 %1"),
              "C:\\Program Files\\W\\w.exe|" + quoted + " " + quoted);
    EXPECT_EQ(fill("C:\\Program Files\\W\\w.EXE /p \"%1\""), "C:\\Program Files\\W\\w.EXE|/p " + quoted);
    EXPECT_EQ(fill("rundll32.exe \"C:\\P F\\v.dll\", Print %1"),
              "rundll32.exe|\"C:\\P F\\v.dll\", Print " + quoted);
    EXPECT_EQ(fill("viewer.exe"), "viewer.exe|");
    EXPECT_EQ(fill("w.exe %1", "C:\\%1 & calc.exe.doc"), "w.exe|\"C:\\%1 & calc.exe.doc\"");
    EXPECT_EQ(fill("w.exe %1", "C:\\a\" /evil.doc"), "refused");
    EXPECT_EQ(fill("w.exe %1", "C:\\a\nb.doc"), "refused");
    EXPECT_EQ(fill(""), "refused");
    EXPECT_EQ(fill("\"\" %1"), "refused");
}

TEST(PhotoCommand, NamesTheFileAndThePrinter) {
    RegisteredCommand command;
    ASSERT_TRUE(MakePhotoCommand("C:\\windows", "C:\\a b.jpg", "Color Laser", command));
    EXPECT_THAT(command.request.arguments, ElementsAre("rundll32.exe"));
    EXPECT_EQ(
        command.request.rawArguments,
        "C:\\windows\\System32\\shimgvw.dll,ImageView_PrintTo /pt \"C:\\a b.jpg\" \"Color Laser\" \"\" \"\"");
    EXPECT_FALSE(MakePhotoCommand("C:\\windows", "C:\\a.jpg", "x\" \"y", command));
}

}  // namespace
}  // namespace quirepress
