#include "backends/dialog_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/dialog_watch.h"
#include "base/path.h"
#include "fakes/fake_app_windows.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"
#include "settings/print_to_file_options.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Fake = FakeAppWindows;

class DialogRulesTest : public testing::Test, protected Surroundings {
protected:
    DialogRulesTest() { debugLog.Open(files, folder.PathOf("qpr.log")); }
    std::string Log() { return folder.Read("qpr.log"); }
    // What is done about the windows in some seconds.
    std::vector<std::string> AnswerFor(int milliseconds) {
        windows.actions.clear();
        const long long end = loop.MonotonicMilliseconds() + milliseconds;
        do {
            rules.CheckWindows();
            loop.Wait(200);
        } while (loop.MonotonicMilliseconds() < end);
        return windows.actions;
    }
    std::vector<std::string> Answer() { return AnswerFor(0); }
    void PutSaveDialog(const std::string& title) {
        rules.CheckWindows();  // sees that the one before it is gone
        windows.PutDialog(
            title,
            {Fake::Field("search"), Fake::Field("name", 1001), Fake::Button("Save"), Fake::Button("Cancel")},
            7);
    }

    FakeAppWindows windows;
    GeneralOptions options;
    PrintToFileSettings settings;
    DialogRules rules{{windows, files, loop, debugLog, options, settings}};
};

TEST_F(DialogRulesTest, ConfirmsPrintDialogsOfEveryLanguage) {
    windows.PutDialog("Print", {Fake::Button("Print"), Fake::Button("Cancel")});
    windows.PutDialog("Drucken", {Fake::Button("Abbrechen"), Fake::Button("OK")});
    windows.PutDialog("印刷", {Fake::Button("キャンセル"), Fake::Button("はい", true)});
    windows.PutDialog("print", {Fake::Button("OK")});
    windows.PutDialog("Print Priority", {Fake::Button("OK")});
    windows.PutDialog("Print - report.doc", {Fake::Button("Cancel", true)});
    EXPECT_THAT(AnswerFor(3'000), ElementsAre("press Print: Print", "press Drucken: OK", "press 印刷: はい"));
    EXPECT_THAT(Log(), HasSubstr("Click21 OK\r\n"));
    // That of the viewer by the return key.
    windows.PutMainWindow("report.pdf - Adobe Reader", 5);
    windows.PutDialog("Print", {Fake::Button("OK")}, 5);
    EXPECT_THAT(Answer(), ElementsAre("return Print"));
}

TEST_F(DialogRulesTest, ClosesKnownBoxes) {
    windows.PutDialog("Fatal Error", {Fake::Button("OK")});
    windows.PutDialog("Status not Available", {Fake::Button("Help", true), Fake::Button("OK")});
    windows.PutDialog("File In Use", {Fake::Button("OK")}, 9);
    EXPECT_THAT(AnswerFor(2'000), ElementsAre("press Fatal Error: OK", "press Status not Available: OK"));
    windows.PutMainWindow("letter.doc - Microsoft Word", 8);
    EXPECT_THAT(Answer(), IsEmpty()) << "another program's box";
    windows.PutMainWindow("letter.doc - Microsoft Word", 9);
    EXPECT_THAT(Answer(), ElementsAre("press File In Use: OK"));
    windows.PutDialog("HP LaserJet", {Fake::Button("OK")});
    EXPECT_THAT(Answer(), IsEmpty());
    options.m_hpClickOk = true;
    EXPECT_THAT(Answer(), ElementsAre("press HP LaserJet: OK")) << "a driver's, when asked to";
}

TEST_F(DialogRulesTest, LooksForOneKindAlone) {
    windows.PutDialog("Fatal Error", {Fake::Button("OK")});
    windows.PutDialog("Print", {Fake::Button("OK")});
    EXPECT_EQ(rules.GetPrintWindows(), 1);
    EXPECT_THAT(windows.actions, ElementsAre("press Print: OK"));
    EXPECT_EQ(rules.GetPrintWindows(), 0);
    EXPECT_EQ(rules.CheckForWindow(), 1);
    EXPECT_FALSE(windows.IsOpen("Fatal Error"));
}

TEST_F(DialogRulesTest, ClosesAPasswordBoxAfterItsSeconds) {
    windows.PutMainWindow("sums.xls - Microsoft Excel", 4);
    windows.PutDialog("Password", {Fake::Button("OK", true)}, 4);
    EXPECT_THAT(AnswerFor(19'500), IsEmpty());
    EXPECT_THAT(AnswerFor(1'000), ElementsAre("close Password"));
    windows.PutDialog("Password", {Fake::Button("OK", true)}, 4);
    EXPECT_THAT(AnswerFor(19'000), IsEmpty()) << "each box has its own time";
    EXPECT_THAT(AnswerFor(1'500), ElementsAre("close Password"));
    options.m_closeOfficePasswordBox = 0;
    windows.PutDialog("Password", {Fake::Button("OK", true)}, 4);
    EXPECT_THAT(AnswerFor(60'000), IsEmpty());
}

TEST_F(DialogRulesTest, GivesAnOutputFileItsName) {
    settings.printPdf.m_path = folder.PathOf("new");
    PutSaveDialog("Save PDF File As");
    EXPECT_THAT(Answer(), IsEmpty()) << "nothing is being printed";
    rules.SetDocument("/in/report.doc");
    const std::string path = JoinPath(folder.PathOf("new"), "report.pdf");
    EXPECT_THAT(Answer(),
                ElementsAre("text Save PDF File As: name = " + path, "press Save PDF File As: Save"));

    // The driver saves into a folder that is there; the next one of this name gets a number.
    files.MakeFolders(folder.PathOf("new"));
    folder.Write("new/report.pdf", "x");
    settings.printPdf.m_versionFile = true;
    PutSaveDialog("Save PDF File As");
    EXPECT_THAT(Answer(), testing::Contains(HasSubstr("report_v0001.pdf")));
    // Controls without numbers: the first field is the one for the name.
    rules.CheckWindows();
    windows.PutDialog("Save PDF File As", {Fake::Field("first"), Fake::Field("next"), Fake::Button("Save")});
    EXPECT_THAT(Answer(), testing::Contains(HasSubstr("Save PDF File As: first = ")));
    PutSaveDialog("Save pdf file as");
    EXPECT_THAT(Answer(), IsEmpty()) << "captions are compared with their case";
}

TEST_F(DialogRulesTest, ReplacesAFileOnlyWhenAllowed) {
    settings.printFile.m_path = folder.Path();
    settings.printFile.m_extension = ".prn";
    folder.Write("report.prn", "x");
    const auto ask = [this](const std::string& action) {
        if (action == "press Print to File: Save")
            windows.PutDialog("Confirm Save As", {Fake::Button("Yes"), Fake::Button("No", true)}, 7);
    };
    windows.whenAnswered = ask;
    windows.PutDialog("Confirm Save As", {Fake::Button("Yes"), Fake::Button("No", true)}, 7);
    rules.SetDocument("/in/report.doc");
    EXPECT_THAT(Answer(), IsEmpty()) << "not about a file of ours";
    windows.Remove("Confirm Save As");

    PutSaveDialog("Print to File");
    EXPECT_THAT(Answer(), ElementsAre("press Print to File: Cancel"));
    EXPECT_THAT(rules.Flaw(), HasSubstr("is there already"));

    settings.printFile.m_overwrite = true;
    rules.SetDocument("/in/report.doc");
    EXPECT_EQ(rules.Flaw(), "");
    PutSaveDialog("Print to File");
    EXPECT_THAT(AnswerFor(1'000), testing::Contains("press Confirm Save As: Yes"));

    // A file that came up since its name was chosen stays.
    settings.printFile.m_overwrite = false;
    settings.printFile.m_versionFile = true;
    PutSaveDialog("Print to File");
    EXPECT_THAT(AnswerFor(1'000), testing::Contains("press Confirm Save As: No"));
}

TEST_F(DialogRulesTest, SavesNowhereWithoutAFolder) {
    PutSaveDialog("Print to File");
    rules.SetDocument("/in/report.doc");
    EXPECT_THAT(Answer(), ElementsAre("press Print to File: Cancel"));
    EXPECT_THAT(rules.Flaw(), HasSubstr("no folder"));
    settings.printFile.m_path = folder.Write("file", "x") + "/below";
    rules.SetDocument("/in/report.doc");
    PutSaveDialog("Print to File");
    EXPECT_THAT(Answer(), ElementsAre("press Print to File: Cancel"));
    EXPECT_THAT(rules.Flaw(), HasSubstr("can't be made"));
}

TEST_F(DialogRulesTest, GivesAWindowTimeAndUpAtLast) {
    windows.PutDialog("Print", {Fake::Button("OK")});
    windows.staying = {"Print"};
    EXPECT_EQ(AnswerFor(800).size(), 1U);
    EXPECT_EQ(AnswerFor(60'000).size(), 4U);
    EXPECT_EQ(rules.CheckWindows().waiting.size(), 1U);
    // One that is still being built is answered when it is.
    windows.Remove("Print");
    windows.PutDialog("Stampa", {});
    EXPECT_THAT(AnswerFor(3'000), IsEmpty());
    windows.ControlsOf("Stampa") = {Fake::Button("Stampa")};
    EXPECT_EQ(AnswerFor(1'000).size(), 1U);
}

TEST_F(DialogRulesTest, IsNotEnteredTwice) {
    windows.PutDialog("Print", {Fake::Button("OK")});
    int inner = -1;
    windows.whenListed = [&] {
        if (inner < 0) inner = rules.CheckForWindow() + rules.GetPrintWindows();
    };
    EXPECT_EQ(rules.GetPrintWindows(), 1);
    EXPECT_EQ(inner, 0);
}

class DialogWatchTest : public DialogRulesTest {
protected:
    DialogWatchTest() {
        FakeProcesses::Script script;
        script.runsFor.reset();
        processes.AddScript(script);
        ProcessRequest request;
        request.arguments = {"program"};
        int error = 0;
        process = processes.Start(request, error);
    }
    std::unique_ptr<ChildProcess> process;
};

TEST_F(DialogWatchTest, AnswersWhileItLives) {
    windows.PutDialog("Fatal Error", {Fake::Button("OK")});
    {
        const DialogWatch watch(rules, "/in/a.doc", *process);
        loop.Wait(250);
        EXPECT_FALSE(windows.IsOpen("Fatal Error"));
    }
    windows.PutDialog("Fatal Error", {Fake::Button("OK")});
    loop.Wait(1'000);
    EXPECT_TRUE(windows.IsOpen("Fatal Error"));
}

TEST_F(DialogWatchTest, NamesTheDialogInWhichTheProgramIsStuck) {
    windows.PutMainWindow("a.doc - Editor", process->Id());
    windows.PutDialog("Of Another", {Fake::Button("OK")}, 99);
    windows.PutDialog("Print - a.doc", {}, process->Id());
    const DialogWatch watch(rules, "/in/a.doc", *process);
    loop.Wait(60'000);
    EXPECT_EQ(watch.Flaw(), "");
    windows.PutDialog("Missing\nFont", {Fake::Button("OK"), Fake::Label("The font is bad.")}, process->Id());
    loop.Wait(9'500);
    EXPECT_EQ(watch.Flaw(), "");
    EXPECT_EQ(watch.DescribeOpenDialogs(), "\"Missing\\nFont\"");
    loop.Wait(2'000);
    EXPECT_EQ(watch.Flaw(), "it waits for an answer in its window \"Missing\\nFont\": \"The font is bad.\"");
}

TEST_F(DialogWatchTest, LetsADialogShowProgress) {
    windows.PutDialog("Printing", {Fake::Label("Page 0")}, process->Id());
    const DialogWatch watch(rules, "/in/a.doc", *process);
    for (int page = 1; page < 10; ++page) {
        loop.Wait(6'000);
        windows.ControlsOf("Printing")[0].name = "Page " + std::to_string(page);
    }
    EXPECT_EQ(watch.Flaw(), "");
    loop.Wait(13'000);
    EXPECT_THAT(watch.Flaw(), HasSubstr("Page 9"));
}

}  // namespace
}  // namespace quirepress
