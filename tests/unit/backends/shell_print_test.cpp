#include "backends/shell_print.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/dialog_rules.h"
#include "backends/dialog_watch.h"
#include "backends/printer_selection.h"
#include "fakes/fake_app_windows.h"
#include "fakes/fake_shell.h"
#include "fakes/fake_spooler.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"
#include "settings/print_to_file_options.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Way = ShellCommand::Way;

class ShellPrintTest : public testing::Test, protected Surroundings {
protected:
    ShellPrintTest() {
        spooler.PutPrinter("Laser");
        spooler.PutPrinter("Plotter");
        folder.Write("print_commands.ini",
                     "COMMAND;First\nTYPES;.doc\nPDF;first %1 %o\n"
                     "COMMAND;Second\nTYPES;.doc .pdf\nPDF;second %1 %o\n"
                     "COMMAND;Own printing\nTYPES;.plt text/x-plot\nPRINT;plot --to %1\n"
                     "COMMAND;To printer\nTYPES;.lab\nPRINT;lab -d %p %1 100%%\n"
                     "COMMAND;Texts\nTYPES;text/*\nPDF;totext %1 %o\n");
    }
    ShellCommand Find(const std::string& path) { return printer.FindCommand("Laser", path); }
    std::string NameFor(const std::string& path) { return Find(path).Name(); }

    FakeShell shell;
    FakeSpooler spooler{files};
    GeneralOptions options;
    PrintCommandFile commands{SettingsPlace{files, prompts, Home()}};
    PrinterSelection selection{{spooler, files, loop, prompts, debugLog, options, Home()}};
    ShellPrinter printer{{shell, processes, files, spooler, selection, commands, debugLog, options}};
};

TEST_F(ShellPrintTest, TheFirstCommandWhoseProgramIsThereCounts) {
    shell.programs = {"first", "second"};
    EXPECT_EQ(NameFor("/x/a.DOC"), "First");
    EXPECT_EQ(Find("/x/a.doc").program, "/programs/first");
    shell.programs = {"second"};
    EXPECT_EQ(NameFor("/x/a.doc"), "Second");
    shell.programs.clear();
    EXPECT_EQ(Find("/x/a.doc").way, Way::kBroken);
    EXPECT_EQ(Find("/x/a.doc").flaw, "there is no program \"first\"");
    EXPECT_EQ(Find("/x/a.none").way, Way::kNone);
    EXPECT_EQ(Find("/x/noending").way, Way::kNone);
}

TEST_F(ShellPrintTest, EndingsGoBeforeTypesAndBothBeforeTheSystem) {
    shell.programs = {"first", "plot", "totext"};
    shell.types = {{".log", "text/plain"}, {".doc", "text/plain"}, {".xyz", "text/x-plot"}};
    shell.printCommands = {{".log", "viewer"}, {".odd", "viewer"}};
    EXPECT_EQ(NameFor("/x/a.log"), "Texts");
    EXPECT_EQ(NameFor("/x/a.doc"), "First");
    EXPECT_EQ(NameFor("/x/a.xyz"), "Own printing");
    EXPECT_EQ(Find("/x/a.odd").way, Way::kSystem);
    EXPECT_EQ(NameFor("/x/a.odd"), "system");
    shell.programs.clear();
    EXPECT_EQ(Find("/x/a.log").way, Way::kSystem) << "better than a program that is not there";
}

TEST_F(ShellPrintTest, APdfIsNotMadeOfAPdf) {
    shell.programs = {"second"};
    EXPECT_EQ(Find("/x/a.pdf").way, Way::kNone);
    shell.printCommands = {{".pdf", "viewer"}};
    EXPECT_EQ(Find("/x/a.pdf").way, Way::kSystem);
}

TEST_F(ShellPrintTest, PhotosGoToTheSystemsViewerUnlessSwitchedOff) {
    shell.photoProgram = "photos";
    shell.printCommands = {{".cr2", "raw-viewer"}};
    EXPECT_THAT(Find("/x/a.CR2").registered.request.arguments, ElementsAre("photos", "/x/a.CR2", "Laser"));
    EXPECT_EQ(Find("/x/a.doc").way, Way::kBroken);
    options.m_xpPhoto = false;
    EXPECT_EQ(Find("/x/a.cr2").registered.line, "raw-viewer");
}

TEST_F(ShellPrintTest, StartsAProgramForTheDefaultPrinter) {
    shell.programs = {"plot", "lab"};
    spooler.MakeDefaultPrinter("Laser");
    const ShellStart start =
        printer.DoShellExecute(Find("/x/$(touch y).plt"), "Plotter", "/x/$(touch y).plt");
    EXPECT_GT(start.result, 32);
    ASSERT_TRUE(start.process);
    EXPECT_EQ(spooler.DefaultPrinter(), "Plotter");
    EXPECT_THAT(processes.records.back().request.arguments, ElementsAre("plot", "--to", "/x/$(touch y).plt"));

    // One that names the printer leaves the default one alone. No name is taken for an option.
    printer.DoShellExecutePDF(Find("-x.lab"), "Laser", "-x.lab");
    EXPECT_EQ(spooler.DefaultPrinter(), "Plotter");
    EXPECT_THAT(processes.records.back().request.arguments,
                ElementsAre("lab", "-d", "Laser", testing::EndsWith("-x.lab"), "100%"));
    EXPECT_FALSE(processes.records.back().request.arguments[3].front() == '-');
}

TEST_F(ShellPrintTest, AnswersTheDialogsOfAProgramWhileItPrints) {
    shell.programs = {"lab"};
    FakeAppWindows windows;
    windows.environment = {{"SHOW", "1"}};
    const PrintToFileSettings settings;
    DialogRules rules({windows, files, loop, debugLog, options, settings});
    printer.UseDialogs(&rules);
    FakeProcesses::Script script;
    script.runsFor.reset();
    processes.AddScript(script);
    {
        const ShellStart start = printer.DoShellExecute(Find("/x/a.lab"), "Laser", "/x/a.lab");
        EXPECT_EQ(processes.records.back().request.environment, windows.environment);
        windows.PutDialog("Odd", {FakeAppWindows::Button("OK")}, start.process->Id());
        loop.Wait(12'000);
        EXPECT_THAT(start.dialogs->Flaw(), HasSubstr("\"Odd\""));
    }
    windows.PutDialog("Print", {FakeAppWindows::Button("OK")});
    loop.Wait(1'000);
    EXPECT_TRUE(windows.IsOpen("Print"));
}

TEST_F(ShellPrintTest, TellsWhyNothingWasStarted) {
    EXPECT_EQ(printer.DoShellExecute(Find("/x/a.none"), "Laser", "/x/a.none").result,
              ShellStart::kNoAssociation);
    EXPECT_EQ(printer.DoShellExecute(Find("/x/a.plt"), "Laser", "/x/a.plt").result, ShellStart::kBroken);
    shell.programs = {"plot"};
    const ShellCommand command = Find("/x/a.plt");
    EXPECT_THAT(printer.DoShellExecute(command, "None", "/x/a.plt").flaw, HasSubstr("default printer"));
    FakeProcesses::Script script;
    script.startError = 13;
    processes.AddScript(script);
    const ShellStart start = printer.DoShellExecute(command, "Laser", "/x/a.plt");
    EXPECT_EQ(start.result, ShellStart::kBroken);
    EXPECT_THAT(start.flaw, HasSubstr("\"plot\" can't be started (error 13)"));
}

}  // namespace
}  // namespace quirepress
