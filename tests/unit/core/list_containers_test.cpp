#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "fakes/archive_writer.h"
#include "unit/core/list_fixture.h"

namespace quirepress {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class ListContainersTest : public ListFixture {
protected:
    int Scan(std::string_view mask, bool descend) {
        return m_list.DoScanDir(folder.PathOf("in"), mask, descend, 1, "", {});
    }
    std::vector<std::string> Unpacked() {
        std::vector<std::string> titles;
        for (const auto& [path, version] : m_list.TakeUnpackedArchives())
            titles.emplace_back(FileTitle(path));
        std::sort(titles.begin(), titles.end());
        return titles;
    }
};

TEST_F(ListContainersTest, ScansAFolderByName) {
    for (const char* name : {"in/b.txt", "in/a.TXT", "in/c.pdf", "in/sub/d.txt", "in/Thumbs.db"})
        folder.Write(name, "x");
    EXPECT_EQ(Scan("*.txt", false), 2);
    EXPECT_THAT(Titles(), ElementsAre("a.TXT", "b.txt"));
    EXPECT_EQ(prompts.statusTexts.back(), "Scanning directory: " + folder.PathOf("in"));
    m_list.Clear();
    Scan("*.*", true);
    EXPECT_THAT(Titles(), ElementsAre("a.TXT", "b.txt", "c.pdf", "d.txt"));
    m_list.Clear();
    EXPECT_EQ(Insert(folder.PathOf("in")), 1);
    EXPECT_EQ(m_list.RowCount(), 4);
    m_list.Clear();
    Scan("?.p*f", true);
    EXPECT_THAT(Titles(), ElementsAre("c.pdf"));
}

TEST_F(ListContainersTest, FoldersThatLeadInACircleEnd) {
    folder.Write("in/a/x.txt", "x");
    std::error_code error;
    fs::create_directory_symlink(folder.PathOf("in"), folder.PathOf("in/a/up"), error);
    fs::create_directory_symlink(folder.PathOf("in/a"), folder.PathOf("in/z"), error);
    if (error) GTEST_SKIP() << "no links here";
    EXPECT_EQ(Scan("*.*", true), 1);
    EXPECT_THAT(Titles(), ElementsAre("x.txt"));
}

TEST_F(ListContainersTest, AFolderThatCannotBeListedCostsItsOwnRow) {
    folder.Write("in/a.txt", "x");
    folder.Write("in/b/c.txt", "x");
    files.FailOnce(FaultyFiles::Call::kListFolder, FileResult::kNoAccess, 2);
    Scan("*.*", true);
    EXPECT_THAT(Rows(), ElementsAre("Yes|a.txt|Ready.", "No|b|Error - Can't open folder: access is denied"));
    EXPECT_EQ(m_list.DoScanDir(folder.PathOf("none"), "*", true, 1, "", {}), 0);
}

TEST_F(ListContainersTest, AScanStopsWhenItIsTold) {
    for (const char* name : {"in/a", "in/b", "in/c"}) folder.Write(name, "x");
    loop.AddPumpTask([this] {
        m_keepGoing = m_list.RowCount() < 2;
        return false;
    });
    files.BeforeEach(FaultyFiles::Call::kInspect, [&](std::string_view) { loop.Advance(100); });
    Scan("*.*", true);
    EXPECT_EQ(m_list.RowCount(), 2);
    EXPECT_GE(loop.PumpCount(), 2);
}

TEST_F(ListContainersTest, ArchivesAreUnpackedWhenAsked) {
    const std::string zip =
        folder.Write("orders.ZIP", MakeArchive("zip", {{"b.txt", "1"}, {"s/a.txt", "2"}}));
    Insert(zip);
    EXPECT_THAT(Titles(), ElementsAre("orders.ZIP"));
    m_list.Clear();
    m_options.m_extractZip = true;
    m_options.m_tempFolder = "Temp";
    ItemTexts texts;
    texts.profiling = "night";
    EXPECT_EQ(Insert(zip, 1, texts), 1);
    EXPECT_THAT(Rows(), ElementsAre("Yes|b.txt|Ready.", "Yes|a.txt|Ready."));
    EXPECT_EQ(TextOf(1, kColumnFilename), folder.PathOf("Temp/Unzip/orders/s/a.txt"));
    EXPECT_EQ(TextOf(1, kColumnProfiling), "night");
    m_options.m_deleteZipFiles = true;
    m_options.m_unzipFolder = folder.PathOf("elsewhere");
    folder.Write("elsewhere/orders/mine.txt", "x");
    Insert(zip);
    EXPECT_EQ(TextOf(2, kColumnFilename), folder.PathOf("elsewhere/orders_2/b.txt"));
    EXPECT_TRUE(folder.Has("orders.ZIP")) << "nothing of it was printed";
    EXPECT_THAT(Unpacked(), ElementsAre("orders.ZIP"));
    EXPECT_THAT(Unpacked(), IsEmpty());
}

TEST_F(ListContainersTest, ArchivesAreForgottenWithTheirRows) {
    m_options.m_extractZip = true;
    const std::string inner = MakeArchive("zip", {{"core.txt", "x"}});
    const std::string job = folder.Write("outer.job", "outer.zip\n");
    folder.Write("outer.zip", MakeArchive("zip", {{"inner.zip", inner}}));
    Insert(folder.Write("unticked.zip", inner), 0);
    Insert(folder.Write("removed.zip", inner));
    m_list.RemoveRow(1);
    Insert(job);
    EXPECT_EQ(m_list.JobFileOf(1), job);
    EXPECT_THAT(Unpacked(), ElementsAre("inner.zip", "outer.zip"));
    m_list.SetText(0, kColumnSelected, "Yes");
    EXPECT_THAT(Unpacked(), ElementsAre("unticked.zip"));
    m_list.Clear();
    const std::string cut = folder.Write("cut.zip", MakeArchive("zip", {{"a.txt", "x"}, {"b.txt", "x"}}));
    files.BeforeEach(FaultyFiles::Call::kInspect,
                     [this](std::string_view path) { m_keepGoing = !EndsWith(path, "a.txt"); });
    Insert(cut);
    m_keepGoing = true;
    EXPECT_THAT(Titles(), ElementsAre("a.txt"));
    EXPECT_THAT(Unpacked(), IsEmpty()) << "not all of it came in";
}

TEST_F(ListContainersTest, AnArchiveThatFailsHasARowOfItsOwn) {
    m_options.m_extractZip = m_options.m_deleteZipFiles = true;
    std::string damaged =
        MakeArchive("zip", {{"good.txt", "g"}, {"bad.txt", "bbbb"}}, "", "zip:compression=store");
    damaged[damaged.find("bbbb")] = '!';
    Insert(folder.Write("damaged.zip", damaged));
    Insert(folder.Write("no.rar", "no archive"));
    Insert(folder.Write("links.tar", MakeArchive("ustar", {{"l", "", AE_IFLNK, "/etc/passwd"}})));
    Insert(folder.Write("empty.zip", ""));
    EXPECT_THAT(
        Rows(),
        ElementsAre("Yes|good.txt|Ready.",
                    "No|damaged.zip|Error - The archive is damaged, only 1 of its files came out whole",
                    "No|no.rar|Error - It is no archive of a known kind, or damaged",
                    "No|links.tar|Error - 1 entries of the archive were left out: links, or names that "
                    "leave its folder",
                    "No|empty.zip|Empty File"));
    EXPECT_THAT(Unpacked(), IsEmpty());
}

TEST_F(ListContainersTest, ArchivesInsideArchivesEndAtALimit) {
    m_options.m_extractZip = true;
    std::string bytes = MakeArchive("zip", {{"core.txt", "x"}});
    for (int i = 0; i < 20; ++i) bytes = MakeArchive("zip", {{"inner.zip", bytes}});
    Insert(folder.Write("outer.zip", bytes));
    EXPECT_THAT(Rows(), ElementsAre("No|inner.zip|Error - Files inside files go deeper than 16, the limit"));
}

TEST_F(ListContainersTest, ShortcutsLeadToTheirTargets) {
    const std::string link = folder.Write("a.lnk", "x");
    const std::string lost = folder.Write("lost.lnk", "x");
    const std::string circle = folder.Write("in/circle.lnk", "x");
    m_shell.targets[link] = folder.Write("target.txt", "x");
    m_shell.targets[circle] = folder.PathOf("in");
    for (const std::string& path : {link, lost, circle}) Insert(path);
    EXPECT_THAT(Rows(), ElementsAre("Yes|target.txt|Ready.", "No|lost.lnk|Error - The shortcut leads nowhere",
                                    "No|circle.lnk|Error - The file leads back to itself"));
}

TEST_F(ListContainersTest, AnAddonJobBringsItsRowsWithAllColumns) {
    const std::string document = folder.Write("a.txt", "x");
    const std::string line =
        "Yes ;" + document + " ;00009 ;Done ;/done ;c ;m ;addon ;from ;4.0 ;proc ; ; ;7 ;Yes ;\r\r\n";
    const std::string job = folder.Write(
        "jobs/x.aob",
        "Title\r\r\n\r\r\nset.prs\r\r\nnote\r\r\n" + line +
            "No ;DL;ftp://host/x.pdf ; ;Ready. ; ; ; ; ; ; ; ; ; ; ; ;\r\r\nYes ;rel.txt ;\r\r\n");
    EXPECT_EQ(Insert(job), 1);
    EXPECT_THAT(m_list.HeaderTexts(), ElementsAre("Title", "", "set.prs", "note"));
    EXPECT_THAT(Rows(), ElementsAre("Yes|a.txt|Ready", "No|x.pdf|No File.", "Yes|rel.txt|No File."));
    EXPECT_EQ(TextOf(0, kColumnPages), "9");
    EXPECT_EQ(TextOf(0, kColumnSizeKb), "4.0");
    EXPECT_EQ(TextOf(0, kColumnPrintDirect), "Yes");
    EXPECT_EQ(TextOf(0, kColumnFileTitle), "a.txt");
    EXPECT_EQ(TextOf(1, kColumnFilename), "DL;ftp://host/x.pdf");
    EXPECT_EQ(TextOf(2, kColumnFilename), folder.PathOf("jobs/rel.txt"));
}

TEST_F(ListContainersTest, AJobListsPathsOfEveryKind) {
    folder.Write("jobs/docs/a.txt", "x");
    folder.Write("jobs/inner.job", "/none/b.txt\n");
    folder.Write("jobs/set.prs", "x");
    const std::string job = folder.Write(
        "jobs/x.job",
        "\xEF\xBB\xBF; a comment\r\ndocs\r\n\r\ninner.job\r\nset.prs\r\nlandscape.paperorientation\r\n"
        "docs\\a.txt\r\nC:\\w.txt\r\n-------Separator-------\r\nNo ;docs/a.txt ;\r\n");
    ItemTexts texts;
    texts.priority = "9";
    EXPECT_EQ(Insert(job, 1, texts), 1);
    EXPECT_THAT(Rows(), ElementsAre("Yes|a.txt|Ready.", "No|b.txt|No File.", "Yes|set.prs|Ready.",
                                    "Yes|landscape.paperorientation|No File.", "Yes|a.txt|Ready.",
                                    "No|" + std::string(FileTitle("C:\\w.txt")) + "|No File.",
                                    "Yes|-------Separator-------|Separator", "No|a.txt|Ready"));
    EXPECT_EQ(TextOf(2, kColumnFilename), folder.PathOf("jobs/set.prs"));
    EXPECT_EQ(TextOf(3, kColumnFilename), "landscape.paperorientation");
    EXPECT_EQ(TextOf(0, kColumnPriority), "9");
    EXPECT_EQ(TextOf(7, kColumnPriority), "9");
    EXPECT_THAT(m_list.HeaderTexts(), ElementsAre("", "", "", ""));
}

TEST_F(ListContainersTest, AReplicationFileNamesItsDocument) {
    folder.Write("in/bill.txt", "x");
    EXPECT_EQ(Insert(folder.Write("in/bill.txt.repl",
                                  "1.tra\n[REPLICATION_FILENAME]\nYes ;[REPLICATION_FILENAME] ;\n")),
              1);
    EXPECT_THAT(Titles(), ElementsAre("1.tra", "bill.txt", "bill.txt"));
    EXPECT_EQ(TextOf(2, kColumnFilename), folder.PathOf("in/bill.txt"));
}

TEST_F(ListContainersTest, JobsThatLoadThemselvesEnd) {
    folder.Write("a.job", "b.job\nx.txt\n");
    Insert(folder.Write("b.job", "a.job\n"));
    EXPECT_THAT(Rows(), ElementsAre("No|b.job|Error - The file leads back to itself", "No|x.txt|No File."));
    m_list.Clear();
    m_options.m_extractZip = true;
    // Each level names the next one ten times.
    std::string lines;
    for (int level = 0; level < 12; ++level) {
        folder.Write(Format("level%d.job", level), lines);
        lines.clear();
        for (int i = 0; i < 10; ++i) lines += Format("level%d.job\n", level);
    }
    Insert(folder.PathOf("level11.job"));
    EXPECT_GT(m_list.RowCount(), 0);
    EXPECT_EQ(TextOf(m_list.RowCount() - 1, kColumnStatus),
              "Error - More than 20000 files inside files, the limit");
}

TEST_F(ListContainersTest, AJobThatCannotBeReadIsReported) {
    const std::string job = folder.PathOf("none.aob");
    EXPECT_EQ(Insert(job), 0);
    EXPECT_THAT(prompts.boxes, ElementsAre(FakePrompts::Box{"Can't read job parameters file.", job}));
    const std::string row = "No|none.aob|Error - Can't read job parameters file: it does not exist";
    EXPECT_THAT(Rows(), ElementsAre(row));
    m_options.m_errorLog = true;  // a run writes it there
    folder.Write("in/a.txt", "x");
    folder.Write("in/all.job", "none.aob\na.txt\n");
    EXPECT_EQ(Insert(folder.PathOf("in")), 1);
    EXPECT_THAT(Rows(), ElementsAre(row, "Yes|a.txt|Ready.", row, "Yes|a.txt|Ready."));
    EXPECT_EQ(prompts.boxes.size(), 1U);
    m_list.RefreshListStatus();
    EXPECT_THAT(Rows(), ElementsAre(row, "Yes|a.txt|Ready", row, "Yes|a.txt|Ready"));
    m_list.SetText(0, kColumnSelected, "Yes");
    m_list.RefreshListStatus();
    EXPECT_EQ(TextOf(0, kColumnStatus), "No File.");
}

}  // namespace
}  // namespace quirepress
