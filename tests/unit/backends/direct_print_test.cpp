#include "backends/direct_print.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_spooler.h"
#include "fakes/forgiving_spooler.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

constexpr std::size_t kChunk = 65535;

// The flag of each family, and a file of it.
const std::vector<std::pair<bool GeneralOptions::*, const char*>> kFamilies = {
    {&GeneralOptions::m_useInternalPostScript, "a.ps"}, {&GeneralOptions::m_useInternalTif, "a.tif"},
    {&GeneralOptions::m_useInternalPdf, "a.pdf"},       {&GeneralOptions::m_useInternalSpl, "a.spl"},
    {&GeneralOptions::m_useInternalZpl, "a.zpl"},       {&GeneralOptions::m_useInternalHpgl, "a.hpgl"},
    {&GeneralOptions::m_useInternalPcl, "a.pcl"},       {&GeneralOptions::m_useInternalTxt, "a.txt"},
    {&GeneralOptions::m_useInternalPrn, "a.prn"}};

GeneralOptions EveryFamily(bool on) {
    GeneralOptions options;
    for (const auto& [flag, name] : kFamilies) options.*flag = on;
    return options;
}

TEST(IsDirectPrintFile, TakesTheListedSpellingsOnly) {
    const GeneralOptions options = EveryFamily(true);
    for (const char* name :
         {"a.ps",   "a.PS",   "a.tif",  "a.TIF",  "a.Tif",  "a.tiff", "a.TIFF",
          "a.pdf",  "a.PDF",  "a.spl",  "a.SPL",  "a.zpl",  "a.ZPL",  "a.Zpl",
          "a.hpgl", "a.HPGL", "a.HpGL", "a.Hpgl", "a.hpGL", "a.HPgl", "a.pcl",
          "a.PCL",  "a.txt",  "a.TXT",  "a.prn",  "a.PRN",  ".ps",    "/data/report.v2.ps"})
        EXPECT_TRUE(IsDirectPrintFile(options, name)) << name;
    for (const char* name : {"report.Ps", "a.pS", "scan.Tiff", "a.TIff", "a.Pdf", "a.Spl", "a.zPl", "a.hPGL",
                             "a.HPGl", "a.Pcl", "a.Txt", "a.Prn", "ps", "a.ps.gz", "a.psx", "a.eps ", ""})
        EXPECT_FALSE(IsDirectPrintFile(options, name)) << name;
}

TEST(IsDirectPrintFile, AsksTheFlagOfTheFamily) {
    for (const auto& [flag, name] : kFamilies) {
        GeneralOptions only = EveryFamily(false);
        EXPECT_FALSE(IsDirectPrintFile(only, name)) << name;
        only.*flag = true;
        for (const auto& [otherFlag, otherName] : kFamilies)
            EXPECT_EQ(IsDirectPrintFile(only, otherName), otherFlag == flag) << name << otherName;
    }
}

TEST(DirectRepeatCount, ReadsTheNumberBehindTheFirstSwitch) {
    const std::vector<std::pair<const char*, int>> cases = {{"", 1},          {"-r3", 3},
                                                            {"-r0", 1},       {"-r-2", 1},
                                                            {"-rx", 1},       {"-r", 1},
                                                            {"-r 3", 1},      {"-c1|-r12|", 12},
                                                            {"-r2 -r5", 2},   {"-R3", 1},
                                                            {"draft-r4x", 4}, {"-r+2", 2},
                                                            {"-r007", 7},     {"-r99999999999", 2147483647}};
    for (const auto& [text, times] : cases) EXPECT_EQ(DirectRepeatCount({text}), times) << text;
    EXPECT_EQ(DirectRepeatCount({"-s1|-e2", "-r3", "-r4"}), 3);
    EXPECT_EQ(DirectRepeatCount({"-rx", "-r3", ""}), 1) << "the first that has one decides";
}

TEST(DirectPrintWarning, SpeaksUpUnlessAKnownFormatIsNamed) {
    EXPECT_NE(DirectPrintWarning("*.doc;*.xls"), "");
    EXPECT_NE(DirectPrintWarning(".PRN"), "");
    for (const char* types : {".prn", "*.doc;*.ps", ".pcl", ".spl;.doc"})
        EXPECT_EQ(DirectPrintWarning(types), "") << types;
}

class DirectPrinterTest : public testing::Test, protected Surroundings {
protected:
    DirectPrinterTest() {
        m_spooler.PutPrinter("Laser");
        m_spooler.PutPrinter("Plotter");
    }

    int Print(std::string_view path) { return m_printer.PrintExtPS("Laser", path, m_progress, m_outcome); }
    // The file's bytes differ everywhere, so that a chunk in the wrong place shows.
    std::string Write(std::size_t size) {
        m_bytes.resize(size);
        for (std::size_t i = 0; i < size; ++i) m_bytes[i] = static_cast<char>((i * 31 + i / 251) & 0xFF);
        return folder.Write("a.ps", m_bytes);
    }
    std::vector<std::string> ChunkCalls() const {
        std::vector<std::string> chunks;
        for (const std::string& call : m_spooler.Calls())
            if (call.starts_with("WriteChunk ")) chunks.push_back(call.substr(11));
        return chunks;
    }

    FakeSpooler m_spooler{files};
    DirectPrinter m_printer{m_spooler, files, loop, debugLog};
    DirectProgress m_progress;
    DirectOutcome m_outcome;
    std::string m_bytes;
};

TEST_F(DirectPrinterTest, CutsTheFileIntoChunks) {
    const std::vector<std::pair<std::size_t, std::vector<std::string>>> cases = {
        {0, {}},
        {1, {"1"}},
        {65535, {"65535"}},
        {65536, {"65535", "1"}},
        {131070, {"65535", "65535"}},
        {131071, {"65535", "65535", "1"}}};
    std::size_t sentBefore = 0;
    for (const auto& [size, chunks] : cases) {
        const std::vector<std::string> before = ChunkCalls();
        const std::string path = Write(size);
        ASSERT_EQ(Print(path), 0) << size;
        std::vector<std::string> expected = before;
        expected.insert(expected.end(), chunks.begin(), chunks.end());
        EXPECT_EQ(ChunkCalls(), expected) << size;
        const SentDocument& sent = m_spooler.Sent().at(sentBefore++);
        EXPECT_EQ(sent.bytes, m_bytes) << size;
        EXPECT_EQ(sent.name, path);
        EXPECT_TRUE(sent.finished);
        EXPECT_EQ(m_outcome.jobId, sent.jobId);
        EXPECT_EQ(m_outcome.bytesSent, static_cast<std::int64_t>(size));
        EXPECT_TRUE(m_outcome.accepted && m_outcome.sourceWhole && !m_outcome.stopped);
        EXPECT_EQ(m_outcome.failedChunks, 0);
    }
}

TEST_F(DirectPrinterTest, AnswersWhatThePrintSystemRefuses) {
    const std::string path = Write(100);
    m_spooler.FailOpening(5);
    EXPECT_EQ(Print(path), -1);
    EXPECT_EQ(m_outcome.systemError, 5);
    m_spooler.StopFailing();
    m_spooler.FailStart(6);
    EXPECT_EQ(Print(path), -2);
    EXPECT_EQ(m_outcome.systemError, 6);
    EXPECT_FALSE(m_outcome.accepted);
    EXPECT_EQ(m_spooler.CountCalls("WriteChunk"), 0);
    EXPECT_EQ(m_spooler.Calls().back(), "Close");
    m_spooler.StopFailing();
    m_spooler.FailFinish(9);
    EXPECT_EQ(Print(path), 0);
    EXPECT_EQ(m_outcome.systemError, 9);
    EXPECT_FALSE(m_outcome.accepted);
}

TEST_F(DirectPrinterTest, OffersTheChunksBehindARefusedOne) {
    ForgivingSpooler spooler(files, 2);
    spooler.PutPrinter("Laser");
    DirectPrinter printer(spooler, files, loop, debugLog);
    const std::string path = Write(3 * kChunk);
    EXPECT_EQ(printer.PrintExtPS("Laser", path, {}, m_outcome), 0);
    EXPECT_EQ(m_outcome.failedChunks, 1);
    EXPECT_EQ(m_outcome.bytesSent, std::int64_t{2 * kChunk});
    EXPECT_EQ(m_outcome.systemError, ForgivingSpooler::kRefusal);
    EXPECT_TRUE(m_outcome.accepted);
    EXPECT_EQ(spooler.Sent().at(0).bytes, m_bytes.substr(0, 65535) + m_bytes.substr(2 * kChunk));
}

TEST_F(DirectPrinterTest, ClosesAnEmptyJobForAFileThatCannotBeOpened) {
    for (const std::string& path : {folder.PathOf("missing.ps"), folder.Path()}) {
        EXPECT_EQ(Print(path), 0) << path;
        EXPECT_FALSE(m_outcome.sourceWhole) << path;
        EXPECT_TRUE(m_spooler.Sent().back().finished) << path;
        EXPECT_EQ(m_spooler.Sent().back().bytes, "") << path;
    }
}

TEST_F(DirectPrinterTest, DropsTheJobOfAFileThatChangesWhileItIsRead) {
    for (const std::size_t newSize : {std::size_t{65535}, std::size_t{70000}, std::size_t{300000}}) {
        const std::string path = Write(2 * kChunk);
        m_progress = [&](std::int64_t done, std::int64_t /*total*/) {
            if (done == 65535) folder.Write("a.ps", std::string(newSize, 'x'));
            return true;
        };
        EXPECT_EQ(Print(path), 0) << newSize;
        EXPECT_FALSE(m_outcome.sourceWhole) << newSize;
        EXPECT_FALSE(m_outcome.accepted) << newSize;
        EXPECT_FALSE(m_spooler.Sent().back().finished) << newSize;
    }
}

TEST_F(DirectPrinterTest, DropsTheJobWhenItIsStopped) {
    std::vector<std::pair<std::int64_t, std::int64_t>> told;
    m_progress = [&](std::int64_t done, std::int64_t total) {
        told.emplace_back(done, total);
        return told.size() < 2;
    };
    EXPECT_EQ(Print(Write(200000)), 0);
    EXPECT_TRUE(m_outcome.stopped);
    EXPECT_FALSE(m_outcome.accepted);
    EXPECT_FALSE(m_spooler.Sent().back().finished);
    EXPECT_EQ(told, (std::vector<std::pair<std::int64_t, std::int64_t>>{{65535, 200000}, {131070, 200000}}));
}

TEST_F(DirectPrinterTest, PumpsAboutOnceAMegabyte) {
    Print(Write(15 * kChunk));
    EXPECT_EQ(loop.PumpCount(), 0);
    Print(Write(40 * kChunk));
    EXPECT_EQ(loop.PumpCount(), 2);
}

TEST_F(DirectPrinterTest, ThePrinterOfASettingsFileReplacesTheCallers) {
    m_printer.UsePrinter("Plotter");
    Print(Write(10));
    m_printer.UsePrinter("");
    Print(Write(10));
    EXPECT_EQ(m_spooler.Sent().at(0).printer, "Plotter");
    EXPECT_EQ(m_spooler.Sent().at(1).printer, "Laser");
}

}  // namespace
}  // namespace quirepress
