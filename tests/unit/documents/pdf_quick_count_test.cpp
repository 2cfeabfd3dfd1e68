#include "documents/pdf_quick_count.h"

#include <gtest/gtest.h>

#include <qpdf/QPDFWriter.hh>

#include "base/format.h"
#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
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
    std::vector<std::pair<int, std::string>> objects = {{1, "<</Type/Catalog/Pages 2 0 R>>"},
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

}  // namespace
}  // namespace quirepress
