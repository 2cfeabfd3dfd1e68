#include "documents/pdf_recovery_count.h"

#include <gtest/gtest.h>

#include "base/format.h"
#include "documents/pdf_quick_count.h"
#include "documents/qpdf_library.h"
#include "fakes/memory_file.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

PdfRecovery Recover(const std::string& bytes) {
    static PdfScratch scratch;
    MemoryFile file(bytes);
    return RecoverPdfPages(file, scratch);
}

int QuickCount(const std::string& bytes) {
    static PdfScratch scratch;
    MemoryFile file(bytes);
    return CountPdfPagesQuickly(file, scratch);
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
    std::vector<std::pair<int, std::string>> objects = {
        {1, "<< /Type /Catalog /Pages 2 0 R >>"},
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
