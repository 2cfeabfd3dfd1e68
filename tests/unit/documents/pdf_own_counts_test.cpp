#include "documents/pdf_quick_count.h"

#include <gtest/gtest.h>

#include <qpdf/QPDFWriter.hh>

#include "base/format.h"
#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_recovery_count.h"
#include "documents/qpdf_library.h"
#include "fakes/memory_file.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

using namespace std::string_literals;

int QuickCount(const std::string& bytes) {
    static PdfScratch scratch;  // one for all files, as a counter has it
    MemoryFile file(bytes);
    return CountPdfPagesQuickly(file, scratch);
}

long long LibraryCount(const std::string& bytes) {
    MemoryFile file(bytes);
    return CountPagesByQpdf(file, true, "");
}

TEST(PdfQuickCount, ReadsEveryKindOfSoundFile) {
    for (const int pages : {1, 2, 9, 100, 1000}) {
        const std::string pdf = MakePdf(pages);
        for (const std::string& file :
             {pdf, MakePdf(pages, 10'000), WithObjectStreams(pdf), Linearized(pdf),
              Linearized(WithObjectStreams(pdf)), WithObjectStreams(Linearized(pdf)),
              RewritePdf(pdf, [](QPDFWriter& writer) { writer.setQDFMode(true); })}) {
            EXPECT_EQ(QuickCount(file), pages) << file.substr(0, 300);
            EXPECT_EQ(LibraryCount(file), pages);
        }
    }
}

TEST(PdfQuickCount, ReadsEncryptedFilesUnlessTheirTreeIsHidden) {
    const std::string pdf = MakePdf(12);
    for (const Cipher cipher : {Cipher::kRc4Of40, Cipher::kRc4Of128, Cipher::kAes128, Cipher::kAes256}) {
        EXPECT_EQ(QuickCount(Encrypted(pdf, cipher, "", false)), 12);
        EXPECT_EQ(QuickCount(Encrypted(pdf, cipher, "secret", false)), 12);
        EXPECT_EQ(QuickCount(Encrypted(pdf, cipher, "", true)), -1);
    }
}

TEST(PdfQuickCount, FollowsUpdates) {
    std::string pdf = MakePdf(9, 100);
    EXPECT_EQ(QuickCount(WithUpdate(pdf, {{4, "<< /Type /Page /Parent 3 0 R >>"}}, "/Root 1 0 R")), 9);
    pdf = WithUpdate(pdf, {{2, "<< /Type /Pages /Count 1 /Kids [ 4 0 R ] >>"}}, "/Root 1 0 R");
    EXPECT_EQ(QuickCount(pdf), 1);
    for (int i = 0; i < 50; ++i) pdf = WithUpdate(pdf, {{90, "(note)"}}, "/Root 1 0 R");
    EXPECT_EQ(QuickCount(pdf), 1);
}

TEST(PdfQuickCount, HybridFilesHideObjectsInAStream) {
    // The table calls 2 free; the stream that it names has it, and stands before the older sections.
    std::string pdf =
        MakePdfOf({{1, "<< /Type /Catalog /Pages 2 0 R >>"}, {4, "<< /Type /Page >>"}}, "/Root 1 0 R");
    const std::size_t tree = pdf.size();
    pdf += "2 0 obj\n<< /Type /Pages /Count 1 /Kids [ 4 0 R ] >>\nendobj\n";
    const std::size_t hidden = pdf.size();
    const std::string row = {'\1', static_cast<char>(tree >> 8), static_cast<char>(tree)};
    pdf += "9 0 obj\n<< /Type /XRef /Size 9 /W [ 1 2 0 ] /Index [ 2 1 ] /Length 3 >>\nstream\n" + row +
           "\nendstream\nendobj\n";
    const std::size_t table = pdf.size();
    pdf += "xref\n2 1\n0000000000 00001 f \n" +
           Format("trailer\n<< /Root 1 0 R /Size 9 /Prev %d /XRefStm %d >>\nstartxref\n%d\n%%%%EOF\n",
                  StartOffset(pdf), hidden, table);
    EXPECT_EQ(QuickCount(pdf), 1);
}

TEST(PdfQuickCount, CountMayBeAnObjectOfItsOwn) {
    PdfBodies objects = {{1, "<</Type/Catalog/Pages 2 0 R>>"},
                         {2, "<</Type/Pages/Count 3 0 R/Kids 4 0 R>>"},
                         {3, "1"},
                         {4, "[5 0 R]"},
                         {5, "<</Type/Page/Parent 2 0 R>>"}};
    EXPECT_EQ(QuickCount(MakePdfOf(objects, "/Root 1 0 R")), 1);
    objects[2].second = "3 0 R";
    EXPECT_EQ(QuickCount(MakePdfOf(objects, "/Root 1 0 R")), -1) << "a reference to itself";
}

TEST(PdfQuickCount, BytesBeforeAndBehindTheFileDoNotMatter) {
    for (const std::string& pdf : {MakePdf(12), WithObjectStreams(MakePdf(12))}) {
        EXPECT_EQ(QuickCount("\x1B%-12345X@PJL JOB\r\n@PJL ENTER LANGUAGE=PDF\r\n" + pdf), 12);
        EXPECT_EQ(QuickCount(pdf + std::string(2000, '\0')), 12);
        EXPECT_EQ(QuickCount(pdf + std::string(60'000, ' ')), 12);
        EXPECT_EQ(QuickCount(pdf + std::string(70'000, ' ')), -1);
    }
}

TEST(PdfQuickCount, WhatIsNotPlausibleIsNotBelieved) {
    const std::string pdf = MakePdf(12);
    const auto withCount = [&](const std::string& count) {
        return WithUpdate(pdf, {{2, "<< /Type /Pages " + count + " /Kids [ 3 0 R 20 0 R ] >>"}},
                          "/Root 1 0 R");
    };
    EXPECT_EQ(QuickCount(withCount("/Count 12")), 12);
    for (const char* lie : {"/Count 0", "/Count -12", "/Count 99999999999", "/Count 1", "/Count 3000000000",
                            "/Count x", "/Count 999999999999999999999999", "/Cxunt 12", "/Count 12.5"})
        EXPECT_EQ(QuickCount(withCount(lie)), -1) << lie;
    EXPECT_EQ(QuickCount(Replaced(pdf, "/Type /Catalog", "/Type /Cxtalog")), -1);
    EXPECT_EQ(QuickCount(Replaced(pdf, "/Pages 2 0 R", "/Pages 3 0 R")), -1) << "not the root of the tree";
    EXPECT_EQ(QuickCount(Replaced(pdf, "2 0 obj", "2 1 obj")), -1);
    EXPECT_EQ(QuickCount(Replaced(pdf, "/Root 1 0 R", "/Root 9 9 R")), -1);
    EXPECT_EQ(QuickCount(Replaced(pdf, "startxref\n", "startxref\n1")), -1);
    EXPECT_EQ(QuickCount(Replaced(pdf, "startxref", "startxxxx")), -1);
    EXPECT_EQ(QuickCount(""), -1);
    EXPECT_EQ(QuickCount("startxref"), -1);
    EXPECT_EQ(QuickCount("startxref 10\n" + std::string(3000, 'x') + "startxref 0"), -1);
}

TEST(PdfQuickCount, LoopsOfSectionsEnd) {
    const std::string pdf = MakePdf(12);
    const std::size_t start = StartOffset(pdf);
    EXPECT_EQ(QuickCount(Replaced(pdf, "/Root 1 0 R", Format("/Root 77 0 R /Prev %d", start))), -1);
    EXPECT_EQ(QuickCount(Replaced(pdf, "/Root 1 0 R", Format("/Root 77 0 R /XRefStm %d", start))), -1);
    std::string twice = WithUpdate(pdf, {{90, "(note)"}}, "/Root 77 0 R");
    twice = Replaced(twice, "/Root 1 0 R", Format("/Root 1 0 R /Prev %d", StartOffset(twice)));
    EXPECT_EQ(QuickCount(twice), -1);
}

TEST(PdfQuickCount, HugeSizesCostNothing) {
    const auto stream = [](const std::string& keys, const std::string& data) {
        return "%PDF-1.5\n1 0 obj\n<< /Type /XRef /Root 1 0 R " + keys + Format(" /Length %d", data.size()) +
               " >>\nstream\n" + data + "\nendstream\nendobj\nstartxref\n9\n%%EOF\n";
    };
    const std::string flate = "/Filter /FlateDecode ";
    const std::string zeros = Deflated(std::string(20 << 20, '\0'));
    EXPECT_EQ(QuickCount(stream(flate + "/Size 99999999999 /W [8 8 8]", zeros)), -1);
    EXPECT_EQ(QuickCount(stream(flate + "/Size 5 /W [1 2 1]", zeros)), -1);
    EXPECT_EQ(QuickCount(stream(flate + "/Size 9999999 /W [1 2 1]", zeros)), -1);
    EXPECT_EQ(QuickCount(stream("/Size 5 /W [1 99 1]", "12345")), -1);
    EXPECT_EQ(QuickCount(stream("/Size 5 /W [0 0 0]", "12345")), -1);
    EXPECT_EQ(
        QuickCount(stream("/Size 5 /W [1 2 1] /Index [0 9223372036854775807 1 9223372036854775807]", "1234")),
        -1);
    std::string table = MakePdf(3);
    table = Replaced(table, "xref\n0 ", "xref\n0 999999999999\n");
    EXPECT_EQ(QuickCount(table), -1);
}

// Sections that promise much and hold little get no room for what they promise.
TEST(PdfQuickCount, PromisedRowsTakeNoMemory) {
    const std::string data = Deflated("1234");
    MemoryFile file(
        "%PDF-1.5\n1 0 obj\n<< /Type /XRef /Root 1 0 R /Size 60000000 /W [8 8 8] /Filter /FlateDecode" +
        Format(" /Length %d >>\nstream\n", data.size()) + data + "\nendstream\nendobj\n");
    std::vector<char> window;
    std::vector<char> rows;
    PdfStreamDecoder decoder;
    PdfFileView view(file, window);
    PdfCrossReferences crossReferences(view, decoder, rows, 0);
    EXPECT_FALSE(crossReferences.LoadNewest(9));
    EXPECT_LE(rows.size(), 2 * kMostUnpacked);
}

TEST(PdfQuickCount, PredictorsOfEveryKindAreUndone) {
    // Rows of type, offset (2 bytes) and generation for the objects 0 to 4, each predicted in its own way.
    const std::string head = "%PDF-1.5\n1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n";
    const std::string pages = "2 0 obj\n<</Type/Pages/Count 1/Kids[3 0 R]>>\nendobj\n";
    const std::string page = "3 0 obj\n<</Type/Page>>\nendobj\n";
    const std::size_t offsets[] = {0, 9, head.size(), head.size() + pages.size(), 0};
    for (int filter = 0; filter <= 5; ++filter) {
        std::string rows;
        std::array<int, 4> above{};
        for (int object = 0; object < 5; ++object) {
            const std::array<int, 4> row = {object == 0 || object == 4 ? 0 : 1,
                                            static_cast<int>(offsets[object] >> 8),
                                            static_cast<int>(offsets[object] & 255), 0};
            rows += static_cast<char>(filter);
            for (int i = 0; i < 4; ++i) {
                const int left = i > 0 ? row[i - 1] : 0;
                const int upLeft = i > 0 ? above[i - 1] : 0;
                const int guess = left + above[i] - upLeft;
                const int a = std::abs(guess - left), b = std::abs(guess - above[i]),
                          c = std::abs(guess - upLeft);
                const int paeth = a <= b && a <= c ? left : b <= c ? above[i] : upLeft;
                const std::array<int, 6> predicted = {0, left, above[i], (left + above[i]) / 2, paeth, 0};
                rows += static_cast<char>(row[i] - predicted[filter]);
            }
            above = row;
        }
        const std::string data = Deflated(rows);
        std::string pdf = head + pages + page;
        pdf +=
            Format(
                "4 0 obj\n<</Type/XRef/Root 1 0 R/Size 5/W[1 2 "
                "1]/Filter[/FlateDecode]/DecodeParms[<</Columns 4"
                "/Predictor 12>>]/Length %d>>\nstream\r\n",
                data.size()) +
            data +
            Format("\nendstream\nendobj\nstartxref\n%d\n%%%%EOF\n", head.size() + pages.size() + page.size());
        EXPECT_EQ(QuickCount(pdf), filter <= 4 ? 1 : -1) << filter;
    }
}

TEST(PdfQuickCount, ReadsAFewKilobytesOfALongFile) {
    std::string pdf = MakePdf(2000);
    MemoryFile file(pdf);
    PdfScratch scratch;
    EXPECT_EQ(CountPdfPagesQuickly(file, scratch), 2000);
    EXPECT_LT(file.BytesRead(), 40'000);
}

PdfRecovery Recover(const std::string& bytes) {
    static PdfScratch scratch;
    MemoryFile file(bytes);
    return RecoverPdfPages(file, scratch);
}

TEST(PdfRecovery, CountsSoundFilesLikeTheLibrary) {
    for (const int pages : {1, 9, 300}) {
        const std::string pdf = MakePdf(pages);
        for (const std::string& file :
             {pdf, WithObjectStreams(pdf), Linearized(pdf), Linearized(WithObjectStreams(pdf)),
              Encrypted(pdf, Cipher::kAes256, "secret", false)})
            EXPECT_EQ(Recover(file).pages, pages);
    }
    const std::string hidden = Encrypted(MakePdf(9), Cipher::kAes256, "", true);
    EXPECT_EQ(Recover(hidden).pages, -1) << "its pages are hidden";
    const std::string partly = WithUpdate(hidden, {{90, "<< /Type /Page >>"}}, "/Root 1 0 R");
    EXPECT_EQ(Recover(partly).pages, -1) << "all but one";
}

TEST(PdfRecovery, FindsTheObjectsOfDamagedFiles) {
    const std::string pdf = MakePdf(100);
    for (const std::string& file : {pdf, WithObjectStreams(pdf)}) {
        const std::string lost = file.substr(0, file.rfind("startxref"));
        EXPECT_EQ(Recover(lost).pages, 100);
        EXPECT_EQ(Recover(lost + "startxref\n99\n%%EOF\n").pages, 100);
        EXPECT_EQ(Recover("junk\n" + file + std::string(100'000, '\0')).pages, 100);
    }
    EXPECT_EQ(Recover(Replaced(pdf, "/Type /Pages /Count 100", "/Type /Pages /Count 0  ")).pages, 100);
    EXPECT_EQ(Recover(Replaced(pdf, "/Type /Catalog", "/Type /Cxtalog")).pages, 100)
        << "the trailer names it";
    const std::string noTrailer =
        Replaced(Replaced(pdf, "trailer", "txxxxer"), "/Type /Catalog", "/Type /Cxtalog");
    EXPECT_EQ(Recover(noTrailer).pages, 100) << "no root at all";
    EXPECT_EQ(Recover(pdf.substr(0, pdf.find("xref"))).pages, 100);
}

TEST(PdfRecovery, LastDefinitionCounts) {
    const std::string pdf = MakePdf(9, 100);
    EXPECT_EQ(
        Recover(WithUpdate(pdf, {{2, "<< /Type /Pages /Count 1 /Kids [ 4 0 R ] >>"}}, "/Root 1 0 R")).pages,
        1);
    EXPECT_EQ(Recover(WithUpdate(pdf, {{4, "null"}}, "/Root 1 0 R")).pages, 8);
}

TEST(PdfRecovery, AttachedFilesDoNotCount) {
    const std::string attached = MakePdf(50);
    std::string pdf = MakePdf(3);
    pdf = WithUpdate(pdf,
                     {{90, Format("<< /Length %d >>\nstream\n", attached.size()) + attached + "\nendstream"}},
                     "/Root 1 0 R");
    EXPECT_EQ(Recover(pdf.substr(0, pdf.rfind("startxref"))).pages, 3);
}

TEST(PdfRecovery, TreesWithLoopsEnd) {
    PdfBodies objects = {{1, "<< /Type /Catalog /Pages 2 0 R >>"},
                         {2, "<< /Type /Pages /Count 9 /Kids [ 3 0 R 2 0 R 5 0 R ] >>"},
                         {3, "<< /Type /Pages /Kids [ 2 0 R 4 0 R 4 0 R ] >>"},
                         {4, "<< /Type /Page >>"},
                         {5, "<< /Parent 2 0 R /MediaBox [ 0 0 9 9 ] >>"}};
    EXPECT_EQ(Recover(MakePdfOf(objects, "/Root 1 0 R")).pages, 3) << "a page used twice, one without a type";
    // Every node names the next one many times: 30 levels of 30 kids.
    objects.resize(1);
    for (int level = 2; level < 32; ++level) {
        std::string kids;
        for (int i = 0; i < 30; ++i) kids += Format("%d 0 R ", level + 1);
        objects.emplace_back(level, "<< /Type /Pages /Kids [ " + kids + "] >>");
    }
    objects.emplace_back(32, "<< /Type /Page >>");
    EXPECT_EQ(Recover(MakePdfOf(objects, "/Root 1 0 R")).pages, 30);
}

TEST(PdfRecovery, TellsWhatIsNoPdfFile) {
    for (const std::string& bytes : {std::string(), std::string("<html>obj</html>"),
                                     std::string(300'000, '\0'), std::string("%PDF-1.4\nnothing")}) {
        const PdfRecovery recovery = Recover(bytes);
        EXPECT_EQ(recovery.pages, -1);
        EXPECT_FALSE(recovery.foundObjects);
    }
    EXPECT_TRUE(Recover(MakePdfOf({{1, "<< /Type /Catalog >>"}}, "/Root 1 0 R")).foundObjects);
}

TEST(PdfRecovery, HostileFilesCostTimeInProportion) {
    std::string open;
    while (open.size() < 2'000'000) open += "1 0 obj<</K(";  // no string ever ends
    Recover(open);
    std::string nested;
    while (nested.size() < 2'000'000) nested += "1 0 obj[[<<";
    Recover(nested);
    std::string stale = "1 0 obj<</Type/ObjStm/N 60000/First 300000/Length 600000>>stream\n";
    for (int i = 0; i < 42'000; ++i) stale += Format("%d 0 ", i);  // each begins where all begin
    stale.resize(300'100, ' ');
    stale += "[" + std::string(299'000, ' ') + "]\nendstream";
    Recover(stale);
    std::string trailers;
    while (trailers.size() < 1'000'000) trailers += "trailer<</Root 1 0 R>>";
    EXPECT_EQ(Recover(trailers).pages, -1);
}

// Whatever the damage, each way ends and answers a number that may be one; where the quick way answers at
// all for a file that is only cut off, it is right.
TEST(PdfDamage, FilesCutOffEverywhere) {
    const std::string pdf = MakePdf(20);
    for (const std::string& file :
         {pdf, WithObjectStreams(pdf), Linearized(pdf), Encrypted(pdf, Cipher::kRc4Of128, "", true)}) {
        for (std::size_t size = 0; size < file.size(); size += 64) {
            const int quick = QuickCount(file.substr(0, size));
            EXPECT_TRUE(quick == -1 || quick == 20) << size << ": " << quick;
            const int recovered = Recover(file.substr(0, size)).pages;
            EXPECT_TRUE(recovered == -1 || (recovered > 0 && recovered <= 20)) << size << ": " << recovered;
        }
    }
}

}  // namespace
}  // namespace quirepress
