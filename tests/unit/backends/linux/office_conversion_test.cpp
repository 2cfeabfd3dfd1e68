// The programs that print_commands.ini names at first, where they are installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "backends/pdf_conversion.h"
#include "base/text.h"
#include "documents/file_signature.h"
#include "fakes/surroundings.h"
#include "platform/event_loop.h"
#include "platform/shell.h"
#include "settings/print_commands.h"

namespace quirepress {
namespace {

using Paths = std::vector<std::string>;

class RealConversion : public testing::Test, protected Surroundings {
protected:
    // False, and the test says so, when its program is not there.
    bool Use(std::string_view name) {
        std::vector<std::string> flaws;
        for (const PrintCommand& each : ParsePrintCommands(DefaultPrintCommands(), flaws).commands)
            if (each.name == name) command = each;
        return !command.words.empty() && !system.shell->FindProgram(command.words[0]).empty();
    }
    void ExpectMade(const std::string& path, const Paths& upcoming) {
        const Conversion made = converter.Convert(command, path, upcoming, [] { return false; });
        EXPECT_EQ(made.end, Conversion::End::kMade) << path << ": " << made.flaw;
        EXPECT_EQ(InspectPdf(files, made.pdf), PdfState::kWhole);
    }
    // Each file is the next one at its turn.
    void ExpectAllMade(const Paths& paths) {
        for (std::size_t i = 0; i < paths.size(); ++i)
            ExpectMade(paths[i], Paths(paths.begin() + static_cast<std::ptrdiff_t>(i) + 1, paths.end()));
    }

    PrintCommand command;
    PdfConverter converter{*system.processes, files, *system.loop, debugLog, folder.PathOf("scratch")};
};

TEST_F(RealConversion, OfficeDocumentsOfEveryName) {
    if (!Use("Office documents")) GTEST_SKIP() << "soffice is not installed";
    Paths paths;
    for (const char* name : {"plain.rtf", "$(touch x).rtf", "a;b.rtf", "-x.rtf", "50% #1?.rtf",
                             "\xE4\xF6.rtf", "line\nend.rtf", "it's \"q\".rtf", "table.csv"})
        paths.push_back(folder.Write(name, EndsWith(name, ".csv") ? "a,b\n1,2\n" : "{\\rtf1 hello}"));
    debugLog.Open(files, folder.PathOf("qpr.log"));
    ExpectAllMade(paths);
    EXPECT_FALSE(folder.Has("x"));
}

TEST_F(RealConversion, TextsAndMail) {
    if (!Use("Texts and saved mail")) GTEST_SKIP() << "soffice is not installed";
    ExpectAllMade({folder.Write("a.log", "line\n"),
                   folder.Write("m.eml", "From: a@example.org\nSubject: x\n\nHello\n")});
}

TEST_F(RealConversion, WebPages) {
    if (!Use("Web pages")) GTEST_SKIP() << "chromium is not installed";
    if (geteuid() == 0) GTEST_SKIP() << "chromium does not run for root";
    ExpectAllMade({folder.Write("50% #1?.html", "<html><body>Hello</body></html>")});
}

}  // namespace
}  // namespace quirepress
