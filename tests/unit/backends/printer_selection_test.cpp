#include "backends/printer_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "backends/paper_items.h"
#include "backends/printer_settings_file.h"
#include "base/little_endian.h"
#include "fakes/fake_spooler.h"
#include "fakes/surroundings.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kNote = "DefaultPrinter.fake.note";

// One with a server that may be gone.
class ServedSpooler : public FakeSpooler {
public:
    using FakeSpooler::FakeSpooler;
    int ListPrinters(std::vector<PrinterInfo>& printers) override {
        return isGone ? -1 : FakeSpooler::ListPrinters(printers);
    }
    std::string DefaultPrinter() override { return isGone ? "" : FakeSpooler::DefaultPrinter(); }
    // As on CUPS: what is default without anybody's choice is the server's.
    std::string DefaultChoice() override { return hasLostChoice ? "" : DefaultPrinter(); }
    int MakeDefaultPrinter(std::string_view printer) override {
        return isGone ? -1 : FakeSpooler::MakeDefaultPrinter(printer);
    }
    bool isGone = false;
    bool hasLostChoice = false;
};

class PrinterSelectionTest : public testing::Test, protected Surroundings {
protected:
    PrinterSelectionTest() {
        spooler.PutPrinter("Office", "lp1");
        spooler.PutPrinter("Label", "lp2");
        spooler.SetBins("Office", {{15, "Auto"}, {258, "Upper tray"}, {7, "1234567890123456789012345"}});
        debugLog.Open(*system.files, folder.PathOf("qpr.log"));
    }

    std::string Load(std::string_view path) {
        std::string message;
        const int result = selection.LoadPrinterSettings(path, message);
        return std::to_string(result) + " " + message;
    }
    // A file of Label's settings, landscape.
    std::string MakeSettings(std::string_view name) {
        std::string message;
        EXPECT_EQ(selection.UsePrinter("Label", message), 0) << message;
        EXPECT_TRUE(selection.ApplyItem("landscape.paperorientation").isApplied);
        EXPECT_EQ(selection.SavePrinterSettings(folder.PathOf(name)), 0);
        EXPECT_EQ(selection.UsePrinter("Office", message), 0) << message;
        return folder.PathOf(name);
    }
    std::string MakeSettingsBytes() {
        MakeSettings("label.prs");
        return folder.Read("label.prs");
    }
    // What a run's end says.
    std::string Restore() {
        std::string message;
        const int result = selection.RestoreAfterRun(message);
        EXPECT_EQ(result != 0, !message.empty());
        return message;
    }
    std::string Log() { return folder.Read("qpr.log"); }

    // A run that makes this the default printer and is ended; `meanwhile` is done before that.
    void CutOffRun(
        std::string_view printer, const std::function<void()>& meanwhile = [] {}) {
        PrinterSelection ended({spooler, files, loop, prompts, debugLog, options, Home()});
        ended.SaveForRun();
        EXPECT_EQ(ended.DPSetDefaultPrinter(printer), 0);
        meanwhile();
    }

    ServedSpooler spooler{files};
    GeneralOptions options;
    PrinterSelection selection{{spooler, files, loop, prompts, debugLog, options, Home()}};
};

TEST_F(PrinterSelectionTest, ChangesTheDefaultPrinterAndGivesOthersTimeToNotice) {
    for (const auto& [delay, waits] : {std::pair(0, 5), std::pair(10, 15)}) {
        options.m_printerChangeDelay = delay;
        const int waitsBefore = loop.WaitCount();
        const long long before = loop.MonotonicMilliseconds();
        EXPECT_EQ(selection.DPSetDefaultPrinter("Label"), 0);
        EXPECT_EQ(loop.WaitCount() - waitsBefore, waits);
        EXPECT_EQ(loop.MonotonicMilliseconds() - before, waits * 100);
    }
    EXPECT_EQ(spooler.DefaultPrinter(), "Label");
    EXPECT_EQ(selection.CurrentPrinter(), "Label");
    EXPECT_EQ(selection.ChangeState(), PrinterChange::kChanging);
}

TEST_F(PrinterSelectionTest, IsStoppedInItsWaitsOnly) {
    options.m_printerChangeDelay = 600;
    bool stop = false;
    selection.UseStop([&] { return stop; });
    loop.StartTimer(1, 250, [&] { stop = true; });
    const long long before = loop.MonotonicMilliseconds();
    EXPECT_EQ(selection.DPSetDefaultPrinter("Label"), 0);
    EXPECT_EQ(loop.MonotonicMilliseconds() - before, 300);
    EXPECT_EQ(spooler.DefaultPrinter(), "Label");
    EXPECT_EQ(selection.CurrentPrinter(), "Label");
}

TEST_F(PrinterSelectionTest, LeavesEverythingWhenTheDefaultCannotBeChanged) {
    spooler.PutPrinter("Portless", "");
    std::string message;
    ASSERT_EQ(selection.UsePrinter("Label", message), 0);
    for (const char* name : {"", "Nowhere", "Portless"}) {
        EXPECT_EQ(selection.DPSetDefaultPrinter(name), 1) << name;
        EXPECT_EQ(selection.ChangeState(), PrinterChange::kFailed);
    }
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_EQ(selection.CurrentPrinter(), "Label");
    EXPECT_EQ(loop.WaitCount(), 0);
}

TEST_F(PrinterSelectionTest, UsesAPrinterWithoutMakingItTheDefault) {
    std::string message;
    ASSERT_TRUE(selection.ApplyItem("3.papercopies").isApplied);
    EXPECT_EQ(selection.UsePrinter("Label", message), 0);
    EXPECT_EQ(selection.CurrentPrinter(), "Label");
    EXPECT_EQ(selection.Ticket(), JobTicket());
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_EQ(selection.UsePrinter("Nowhere", message), -1);
    EXPECT_EQ(message, "There is no printer \"Nowhere\".");
    EXPECT_EQ(selection.CurrentPrinter(), "Label");
}

TEST_F(PrinterSelectionTest, FallsBackToTheDefaultPrinter) {
    const std::string whole = MakeSettingsBytes();
    std::string foreign = whole;
    foreign.replace(4, 4, "Offi");
    std::string longMode = whole;
    WriteLittle32(longMode, 0, 0xFFFFFFFF);
    std::string longNames = whole;
    WriteLittle32(longNames, 4 + 172, 0xFFFFFFFE);
    for (const std::string& path : {folder.PathOf("none.prs"), folder.Write("1.prs", foreign),
                                    folder.Write("2.prs", longMode), folder.Write("3.prs", longNames),
                                    folder.Write("4.prs", ""), folder.Write("5.prs", whole.substr(0, 100))}) {
        std::string message;
        ASSERT_EQ(selection.UsePrinter("Label", message), 0);
        ASSERT_TRUE(selection.ApplyItem("2.papercopies").isApplied);
        EXPECT_EQ(Load(path).substr(0, 3), "-1 ");
        EXPECT_EQ(selection.CurrentPrinter(), "Office") << path;
        EXPECT_EQ(selection.Ticket(), JobTicket()) << path;
    }
    EXPECT_THAT(Log(), HasSubstr("failed error at GlobalAlloc, dret: 1, len: 4294967295\r\n"));
}

TEST_F(PrinterSelectionTest, LoadsAFileCutShortBehindItsDeviceModeWithoutAPrinter) {
    const std::string whole = MakeSettingsBytes();
    for (std::size_t size = 4 + 172; size < whole.size(); ++size) {
        const std::string path = folder.Write("cut.prs", whole.substr(0, size));
        EXPECT_EQ(Load(path).substr(0, 2), "0 ") << size;
        EXPECT_EQ(selection.CurrentPrinter(), "") << size;
        EXPECT_EQ(selection.Ticket().orientation, JobTicket::Orientation::kLandscape) << size;
        EXPECT_EQ(selection.Setup().deviceNames, "") << size;
    }
    EXPECT_EQ(selection.ApplyItem(folder.PathOf("cut.prs")).status, "Printer set to: Office");
}

TEST_F(PrinterSelectionTest, SaysWhenThereIsNoPrinterAtAll) {
    std::string message;
    ASSERT_EQ(selection.UsePrinter("Label", message), 0);
    spooler.FailListing();
    EXPECT_EQ(selection.UsePrinter("Label", message), -1);
    EXPECT_EQ(message, "The printers can't be read.");
    spooler.StopFailing();
    for (const char* printer : {"Office", "Label"}) spooler.RemovePrinterQueue(printer, message);
    EXPECT_EQ(selection.LoadPrinterSettings(folder.PathOf("none.prs"), message), -1);
    EXPECT_EQ(selection.CurrentPrinter(), "");
    EXPECT_EQ(prompts.statusTexts.back(), "printer not set...");
    EXPECT_EQ(selection.ApplyItem("2.papercopies").status, "Error Copies Not Set");
    EXPECT_EQ(selection.KeepDefaultAtStart(), -1);
    ASSERT_EQ(prompts.boxes.size(), 1U);
    EXPECT_THAT(prompts.boxes[0].text, testing::StartsWith("ERROR! No default printer!\n\nNo printers are"));
}

TEST_F(PrinterSelectionTest, FindsTraysAsDriversListThem) {
    BinInfo tray;
    EXPECT_TRUE(selection.FindTray("Office", "Upper tray", tray));
    EXPECT_EQ(tray.number, 258);
    EXPECT_TRUE(selection.FindTray("Office", "123456789012345678901234", tray));
    EXPECT_EQ(tray.number, 7);
    for (const auto& [printer, name] :
         {std::pair("Office", "upper tray"), std::pair("Nowhere", "Upper tray"), std::pair("Office", "")}) {
        EXPECT_FALSE(selection.FindTray(printer, name, tray)) << name;
        EXPECT_EQ(tray.number, 0);
        EXPECT_EQ(tray.name, "Unknown");
    }
}

TEST_F(PrinterSelectionTest, AppliesTrayFiles) {
    const ItemResult result = selection.ApplyItem(folder.Write("upper.tra", "Upper tray"));
    EXPECT_EQ(result.status, "Set Tray");
    EXPECT_EQ(selection.Ticket().tray, 258);
    EXPECT_EQ(selection.Ticket().trayName, "Upper tray");
    for (const std::string& path :
         {folder.Write("no.tra", "No tray"), folder.Write("long.TRA", "1234567890123456789012345"),
          folder.PathOf("none.tra"), folder.Write("a.tray.pdf", "%PDF-1.4")}) {
        const ItemResult failed = selection.ApplyItem(path);
        EXPECT_FALSE(failed.isApplied) << path;
        EXPECT_EQ(failed.status, "Error Tray Not Set");
        EXPECT_NE(failed.message, "");
        EXPECT_EQ(selection.Ticket().tray, 258);
    }
}

TEST_F(PrinterSelectionTest, AppliesPaperItemsOneUponTheOther) {
    for (const char* item : {"9.papersize", "landscape.paperorientation", "bw.papercolor", "5000.paperscale"})
        EXPECT_TRUE(selection.ApplyItem(item).isApplied) << item;
    EXPECT_EQ(selection.ApplyItem("0.papercopies").status, "Error Copies Not Set");
    EXPECT_EQ(OptionsText(selection.Ticket(), ""),
              "media=A4 color=monochrome orientation=landscape scale=100");
    JobTicket written;
    std::string message;
    ASSERT_EQ(PortableSetupFormat().ReadTicket(selection.Setup().deviceMode, written, message), 0);
    EXPECT_EQ(written, selection.Ticket());
    EXPECT_EQ(selection.ApplyItem("0.papercopies").message, "\"0.papercopies\" does not tell what to set.");
    EXPECT_THAT(selection.ApplyItem("restore.paperorientation").message, HasSubstr("nothing to restore"));
    EXPECT_TRUE(selection.ApplyItem("save.paperorientation").isApplied);
    ASSERT_EQ(selection.DPSetDefaultPrinter("Label"), 0);
    EXPECT_EQ(selection.Ticket(), JobTicket());
    EXPECT_EQ(selection.ApplyItem("restore.paperorientation").status, "Set Orientation");
    EXPECT_EQ(selection.Ticket().orientation, JobTicket::Orientation::kLandscape);
}

TEST_F(PrinterSelectionTest, TakesPrinterItemsAsFilesOrAsNames) {
    const std::string settings = MakeSettingsBytes();
    EXPECT_EQ(selection.ApplyItem(folder.Write("Office.printer", settings)).status, "Printer set to: Label");
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_EQ(selection.ApplyItem("/nowhere/Label.printer").status, "Printer set to: Label");
    EXPECT_EQ(spooler.DefaultPrinter(), "Label");
    EXPECT_EQ(selection.ApplyItem(folder.Write("empty/Office.printer", "")).status, "Printer set to: Office");
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    const ItemResult failed = selection.ApplyItem("Nowhere.printer");
    EXPECT_FALSE(failed.isApplied);
    EXPECT_TRUE(failed.status.starts_with("Error")) << failed.status;
    EXPECT_THAT(failed.message, HasSubstr("Nowhere"));
    EXPECT_TRUE(selection.ApplyItem("none.prs").status.starts_with("Error"));
}

TEST(PrinterSelection, TakesItsOwnItemsOnly) {
    for (const char* path : {"a.printer", "a.TRA", "a.tra.old", "x.paperorientation", "1.papercopies.txt"})
        EXPECT_TRUE(PrinterSelection::TakesItem(path)) << path;
    for (const char* path : {"a.PRS", "a.pro", "a.bat", "a.pdf", "", "a.printer.pdf"})
        EXPECT_FALSE(PrinterSelection::TakesItem(path)) << path;
}

TEST_F(PrinterSelectionTest, BringsEverythingBackAfterARun) {
    MakeSettings("label.prs");
    ASSERT_TRUE(selection.ApplyItem("2.papercopies").isApplied);
    const PrintSetup before = selection.Setup();
    selection.SaveForRun();
    EXPECT_EQ(selection.ChangeState(), PrinterChange::kNone);
    EXPECT_TRUE(folder.Has("tmp_default.prs"));
    PrsContent content;
    std::string message;
    EXPECT_EQ(ReadPrintSetup(files, folder.PathOf("temp.prs"), content, message), PrsReading::kWhole);
    EXPECT_EQ(content.mode.bytes, before.deviceMode);

    ASSERT_TRUE(selection.ApplyItem("Label.printer").isApplied);
    ASSERT_TRUE(selection.ApplyItem("landscape.paperorientation").isApplied);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_EQ(selection.CurrentPrinter(), "Office");
    EXPECT_EQ(selection.Setup(), before);
    EXPECT_EQ(selection.Ticket().copies, 2);
    EXPECT_EQ(selection.Ticket().orientation, JobTicket::Orientation::kUnset);

    // Nothing to be waited for when the default printer has stayed.
    selection.SaveForRun();
    const int waits = loop.WaitCount();
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(loop.WaitCount(), waits);
}

TEST_F(PrinterSelectionTest, SetsBackOnlyWhatItsRunHasChanged) {
    // The run of another program had changed it before this one began, and sets it back by itself.
    ASSERT_EQ(spooler.MakeDefaultPrinter("Label"), 0);
    selection.SaveForRun();
    ASSERT_EQ(spooler.MakeDefaultPrinter("Office"), 0);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");

    // The user has another one by now.
    spooler.PutPrinter("Cellar", "lp3");
    selection.SaveForRun();
    ASSERT_TRUE(selection.ApplyItem("Label.printer").isApplied);
    ASSERT_EQ(spooler.MakeDefaultPrinter("Cellar"), 0);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(spooler.DefaultPrinter(), "Cellar");
    EXPECT_FALSE(folder.Has(kNote));

    // What can't be set changes nothing of that, and a move to a balanced printer is a change, too.
    selection.SaveForRun();
    std::string message;
    ASSERT_EQ(selection.MoveToPrinter("Label", message), 0) << message;
    ASSERT_FALSE(selection.ApplyItem("Nowhere.printer").isApplied);
    EXPECT_TRUE(folder.Has(kNote));
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(spooler.DefaultPrinter(), "Cellar");
    EXPECT_FALSE(folder.Has(kNote));
}

TEST_F(PrinterSelectionTest, AStartSetsBackWhatAnEndedRunHasLeft) {
    CutOffRun("Label", [&] {
        selection.BringDefaultBack();
        EXPECT_EQ(spooler.DefaultPrinter(), "Label") << "its run is under way";
        EXPECT_EQ(selection.OwnDefaultPrinter(), "Office");
    });
    ASSERT_EQ(spooler.DefaultPrinter(), "Label");
    std::string note = folder.Read(kNote);
    selection.BringDefaultBack();
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_FALSE(folder.Has(kNote));
    EXPECT_THAT(Log(), HasSubstr("is set back: Label to Office\r\n"));

    // Not what somebody has chosen since, nor by a note that is not whole.
    spooler.PutPrinter("Cellar", "lp3");
    CutOffRun("Label");
    ASSERT_EQ(spooler.MakeDefaultPrinter("Cellar"), 0);
    selection.BringDefaultBack();
    EXPECT_EQ(spooler.DefaultPrinter(), "Cellar");
    EXPECT_FALSE(folder.Has(kNote));
    // What the print system has lost while it wrote it was chosen by nobody.
    CutOffRun("Label");
    spooler.hasLostChoice = true;
    ASSERT_EQ(spooler.MakeDefaultPrinter("Office"), 0);
    selection.BringDefaultBack();
    EXPECT_EQ(spooler.DefaultPrinter(), "Cellar");
    spooler.hasLostChoice = false;
    ASSERT_EQ(spooler.MakeDefaultPrinter("Label"), 0);
    note.insert(note.size() - 1, "s");  // cut short, it names "Label"
    for (std::size_t size = 0; size < note.size(); ++size) {
        folder.Write(kNote, note.substr(0, size));
        selection.BringDefaultBack();
        EXPECT_EQ(spooler.DefaultPrinter(), "Label") << size;
        EXPECT_FALSE(folder.Has(kNote)) << size;
    }
}

// Ended after the note of the second and before the print system has made it the default.
TEST_F(PrinterSelectionTest, AnEndedRunMayHaveStoodBetweenTwoPrinters) {
    spooler.PutPrinter("Portless", "");
    {
        PrinterSelection ended({spooler, files, loop, prompts, debugLog, options, Home()});
        ended.SaveForRun();
        ASSERT_EQ(ended.DPSetDefaultPrinter("Label"), 0);
        ASSERT_EQ(ended.DPSetDefaultPrinter("Portless"), 1);
    }
    selection.BringDefaultBack();
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
}

TEST_F(PrinterSelectionTest, WhatCannotBeSetBackIsToldAndTriedAgain) {
    selection.SaveForRun();
    ASSERT_TRUE(selection.ApplyItem("Label.printer").isApplied);
    spooler.isGone = true;
    EXPECT_EQ(Restore(),
              "The default printer can't be set back to \"Office\". The next start tries it again.");
    selection.BringDefaultBack();
    EXPECT_TRUE(folder.Has(kNote));

    // A run that begins before that knows what was the user's own.
    selection.SaveForRun();
    spooler.isGone = false;
    spooler.PutPrinter("Cellar", "lp3");
    ASSERT_TRUE(selection.ApplyItem("Cellar.printer").isApplied);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    EXPECT_FALSE(folder.Has(kNote));

    // One that is gone for good is not waited for.
    CutOffRun("Label");
    std::string message;
    spooler.RemovePrinterQueue("Office", message);
    selection.BringDefaultBack();
    EXPECT_EQ(spooler.DefaultPrinter(), "Label");
    EXPECT_FALSE(folder.Has(kNote));
}

TEST_F(PrinterSelectionTest, BringsTheDefaultBackOnQuitWhenItIsAskedTo) {
    EXPECT_EQ(selection.KeepDefaultAtStart(), 0);
    EXPECT_TRUE(folder.Has("DefaultPrinter.prs"));
    EXPECT_THAT(prompts.statusTexts, ElementsAre("Printer set to: Office"));
    ASSERT_EQ(selection.DPSetDefaultPrinter("Label"), 0);
    selection.RestoreOnQuit();
    EXPECT_EQ(spooler.DefaultPrinter(), "Label");
    options.m_defaultPrinterOnQuit = true;
    selection.RestoreOnQuit();
    EXPECT_EQ(spooler.DefaultPrinter(), "Office");
}

TEST_F(PrinterSelectionTest, AFullDiskCostsTheFilesOnly) {
    files.FillDiskAfter(0);
    EXPECT_EQ(selection.KeepDefaultAtStart(), 0);
    for (const bool isReadOnly : {false, true}) {
        if (isReadOnly) files.FailAlways(FaultyFiles::Call::kTryLock, FileResult::kNoAccess);
        selection.SaveForRun();
        ASSERT_EQ(selection.DPSetDefaultPrinter("Label"), 0);
        EXPECT_EQ(Restore(), "");
        EXPECT_EQ(spooler.DefaultPrinter(), "Office");
    }
    EXPECT_FALSE(folder.Has("temp.prs"));
    EXPECT_EQ(selection.SavePrinterSettings(folder.PathOf("a.prs")), -1);
}

// The status that the item gives, and what it makes of `state`.
std::string Apply(std::string_view name, PaperState& state, PaperGroup group = PaperGroup::kPaper) {
    const PaperItem* item = FindPaperItem(name, group);
    if (item == nullptr) return "no item";
    return std::string(item->apply(state, name) ? item->doneStatus : item->failedStatus);
}

TEST(PaperItems, SetWhatTheirNamesSay) {
    PaperState state;
    for (const char* name : {"/a/bw.papercolor", "color.papercolor"})
        EXPECT_EQ(Apply(name, state), "Set Color") << name;
    for (const char* name : {"simplex.paperduplex", "vertical.paperduplex", "horizontal.paperduplex"})
        EXPECT_EQ(Apply(name, state), "Set Duplex") << name;
    for (const char* name : {"portrait.paperorientation", "landscape.paperorientation"})
        EXPECT_EQ(Apply(name, state, PaperGroup::kOrientation), "Set Orientation") << name;
    EXPECT_EQ(OptionsText(state.ticket, ""), "sides=two-sided-short-edge color=color orientation=landscape");
}

TEST(PaperItems, TakeTheFirstDigitsOfTheTitleWithinTheirLimits) {
    struct Case {
        const char* title;
        const char* status;
        int JobTicket::*member;
        int value;  // afterwards; 5 was there before
    };
    constexpr auto kScale = &JobTicket::scale;
    constexpr auto kSize = &JobTicket::paperSize;
    constexpr auto kCopies = &JobTicket::copies;
    for (const Case& expected :
         {Case{"1000.paperscale", "Set Scale", kScale, 1000},
          Case{"1001.paperscale", "Set Scale", kScale, 100}, Case{"0.paperscale", "Set Scale", kScale, 100},
          Case{".paperscale", "Set Scale", kScale, 100},
          Case{"99999999999999999999.paperscale", "Set Scale", kScale, 100},
          Case{"at 0071% of 2.paperscale", "Set Scale", kScale, 71},
          Case{"1000.papersize", "Set Size", kSize, 1000}, Case{"A4.papersize", "Set Size", kSize, 4},
          Case{"1001.papersize", "Error Size Not Set", kSize, 5},
          Case{"letter.papersize", "Error Size Not Set", kSize, 5},
          Case{"1000000.papercopies", "Set Copies", kCopies, 1'000'000},
          Case{"-3.papercopies", "Set Copies", kCopies, 3},
          Case{"1000001.papercopies", "Error Copies Not Set", kCopies, 5},
          Case{"0.papercopies", "Error Copies Not Set", kCopies, 5}}) {
        PaperState state;
        state.ticket.*expected.member = 5;
        EXPECT_EQ(Apply(std::string("/jobs 7/") + expected.title, state), expected.status) << expected.title;
        EXPECT_EQ(state.ticket.*expected.member, expected.value) << expected.title;
    }
}

TEST(PaperItems, RefuseWordsThatMeanNothing) {
    PaperState state;
    EXPECT_EQ(Apply("sideways.paperorientation", state, PaperGroup::kOrientation),
              "Error Orientation Not Set");
    EXPECT_EQ(Apply("Color.papercolor", state), "Error Color Not Set");
    EXPECT_EQ(Apply("duplex.paperduplex", state), "Error Duplex Not Set");
    EXPECT_EQ(Apply("9.PaperSize", state), "no item");
    EXPECT_EQ(Apply("landscape.paperorientation", state), "no item");
    EXPECT_EQ(state.ticket, JobTicket());
    // An unknown word gives way to what the name says besides.
    EXPECT_EQ(Apply("grey.papercolor 3.papercopies", state), "Set Copies");
    EXPECT_EQ(Apply("2.papercopies 60.paperscale", state), "Set Scale");
}

}  // namespace
}  // namespace quirepress
