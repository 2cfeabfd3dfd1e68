#include "documents/pdf_merge.h"

#include <gmock/gmock.h>

#include "base/format.h"
#include "documents/qpdf_library.h"
#include "fakes/surroundings.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

using Objects = PdfBodies;
using testing::HasSubstr;

constexpr const char* kTrailer = "/Size 99 /Root 1 0 R";

// The library, which keeps count, or refuses everything.
class CountingLibrary : public PdfPages {
public:
    explicit CountingLibrary(Files& files) : m_library(files) {}

    PdfResult InspectColors(std::string_view, std::string_view, int, std::vector<PageColor>&) override {
        return PdfResult::kGaveUp;
    }
    PdfResult ExtractPages(std::string_view path, std::string_view password,
                           const std::vector<PdfPageRange>& ranges, std::string_view target) override {
        ++m_calls;
        return m_refuses ? PdfResult::kGaveUp : m_library.ExtractPages(path, password, ranges, target);
    }

    long long CountPages(const std::string& path) { return m_library.CountPages(path, true, ""); }

    int m_calls = 0;
    bool m_refuses = false;

private:
    QpdfLibrary m_library;
};

class PdfMergeTest : public testing::Test, protected Surroundings {
protected:
    std::string Put(const std::string& bytes) {
        return folder.Write("in" + std::to_string(++inputs) + ".pdf", bytes);
    }
    PdfResult Merge(const std::vector<std::string>& files_, const std::string& password = "") {
        PdfMerge merge(files, library, target, folder.PathOf("scratch"));
        for (const std::string& bytes : files_)
            if (const PdfResult result = merge.Add(Put(bytes), password); result != PdfResult::kDone)
                return result;
        return merge.Finish();
    }
    std::string Merged() { return folder.Read("out.pdf"); }
    // What the fast path, and then the library, make of a file.
    bool IsRefused(const std::string& bytes) {
        library.m_calls = 0;
        library.m_refuses = true;
        const PdfResult result = Merge({bytes});
        EXPECT_EQ(result == PdfResult::kDone, library.m_calls == 0);
        library.m_refuses = false;
        return library.m_calls > 0;
    }
    // The page tree's numbers are 2 and 3, the page's is 4, its content's 5.
    static Objects OnePage(const std::string& catalogKeys = "", const std::string& pageKeys = "") {
        return {{1, "<</Type/Catalog/Pages 2 0 R" + catalogKeys + ">>"},
                {2, "<</Type/Pages/Count 1/Kids[3 0 R]>>"},
                {3, "<</Type/Pages/Parent 2 0 R/Count 1/Kids[4 0 R]>>"},
                {4, "<</Type/Page/Parent 3 0 R/Contents 5 0 R" + pageKeys + ">>"},
                {5, "<</Length 9>>\nstream\n(Page 7,)\nendstream"}};
    }
    static std::string PdfOf(const Objects& objects) { return MakePdfOf(objects, kTrailer); }

    CountingLibrary library{*system.files};
    const std::string target = folder.PathOf("out.pdf");
    int inputs = 0;
};

TEST_F(PdfMergeTest, JoinsEveryKindOfSoundFileInOrder) {
    const std::string pdf = MakePdf(10, 3);
    std::string updated =
        WithUpdate(MakePdf(2), {{5, "<</Length 9>>\nstream\n(Page 8,)\nendstream"}}, "/Root 1 0 R");
    const std::vector<std::string> kinds = {pdf,
                                            WithObjectStreams(pdf),
                                            Linearized(WithObjectStreams(pdf)),
                                            updated,
                                            "\x1B%-12345X@PJL ENTER LANGUAGE=PDF\r\n" + MakePdf(1),
                                            MakePdf(1) + std::string(2000, '\0'),
                                            MakePdf(10, 1)};
    ASSERT_EQ(Merge(kinds), PdfResult::kDone);
    const std::string ten = "0 1 2 3 4 5 6 7 8 9 ";
    EXPECT_EQ(DescribePages(Merged()), ten + ten + ten + "8 1 0 0 " + ten);
    EXPECT_EQ(library.m_calls, 0);
    // What was merged can be merged, and stays what it is.
    const std::string once = Merged();
    ASSERT_EQ(Merge({once}), PdfResult::kDone);
    EXPECT_EQ(DescribePages(Merged()), DescribePages(once));
    EXPECT_EQ(library.m_calls, 0);
}

TEST_F(PdfMergeTest, MergesManyFilesIntoObjectStreamsThatTheLibraryReads) {
    ASSERT_EQ(Merge(std::vector<std::string>(40, MakePdf(20))), PdfResult::kDone);
    EXPECT_EQ(library.CountPages(target), 800);
    EXPECT_THAT(Merged(), HasSubstr("/ObjStm"));
}

TEST_F(PdfMergeTest, WhatPagesInheritStaysWithTheirFile) {
    const std::string turned =
        Replaced(MakePdf(2), "/Count 2 /Kids [ 3 0 R ]", "/Count 2 /Rotate 90 /Kids [ 3 0 R ]");
    ASSERT_EQ(Merge({MakePdf(1), turned, MakePdf(1)}), PdfResult::kDone);
    const std::string merged = Merged();
    std::string turns;
    for (const char* page : {"0", "1", "2", "3"})
        turns += ObjectAt(merged, std::string(page) + " /Rotate") + ' ';
    EXPECT_EQ(turns, "null 90 90 null ");
}

// Strings, names and comments that look like references, streams that look like objects.
TEST_F(PdfMergeTest, OnlyReferencesChange) {
    const std::string data = "4 0 R endstream 4 0 obj";
    Objects objects =
        OnePage("",
                "/A(4 0 R\\)(5 0 R))/B<34203020>/C[1 2 R3 4 0 R]/D/4#200#20R/E[-4 0 4.0 0 5 0 R 0 0]%4 0 R\n"
                "/F 6 0 R/G 77 0 R/H[null true false]/I 8 0 R");
    objects[3].second = Replaced(objects[3].second, "[1 2 R3 4 0 R]", "[1 2 4 0 R]");
    objects.push_back({6, "(six)"});
    objects.push_back({7, std::to_string(data.size())});
    objects.push_back({8, "<</X/Length/Length 7 0 R/Y 7 0 R>>stream\r\n" + data + "\r\nendstream"});
    ASSERT_EQ(Merge({MakePdf(1), PdfOf(objects)}), PdfResult::kDone);
    EXPECT_EQ(library.m_calls, 0);
    const std::string merged = Merged();
    const std::string page = ObjectAt(merged, "1 /C 2");
    const std::string content = ObjectAt(merged, "1 /Contents");
    EXPECT_EQ(ObjectAt(merged, "1 /A"), "(4 0 R\\)\\(5 0 R\\))");
    EXPECT_EQ(ObjectAt(merged, "1 /B"), "(4 0 )");
    EXPECT_EQ(ObjectAt(merged, "1 /C"), "[ 1 2 " + page + " ]");
    EXPECT_EQ(ObjectAt(merged, "1 /D"), "/4#200#20R");
    EXPECT_EQ(ObjectAt(merged, "1 /E"), "[ -4 0 4.0 0 " + content + " 0 0 ]");
    EXPECT_EQ(ObjectAt(merged, "1 /F ="), "(six)");
    EXPECT_EQ(ObjectAt(merged, "1 /G"), "null");
    EXPECT_EQ(ObjectAt(merged, "1 /H"), "[ null true false ]");
    EXPECT_EQ(ObjectAt(merged, "1 /I data"), data);
    EXPECT_EQ(ObjectAt(merged, "1 /I /X"), "/Length");
    EXPECT_EQ(ObjectAt(merged, "1 /I /Y ="), std::to_string(data.size()));
}

TEST_F(PdfMergeTest, LinksWithinAFileLeadToItsPages) {
    const std::string link = "/Annots[<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/Dest[4 0 R/Fit]>>]";
    ASSERT_EQ(Merge({MakePdf(3), PdfOf(OnePage("/Outlines<</Title(gone)>>", link)), MakePdf(1)}),
              PdfResult::kDone);
    const std::string merged = Merged();
    EXPECT_EQ(ObjectAt(merged, "3 /Annots 0 /Dest 0 /Contents"), ObjectAt(merged, "3 /Contents"));
    EXPECT_EQ(ObjectAt(merged, "root /Outlines"), "null");
}

// What a document hides on paper must not come out because it was merged.
TEST_F(PdfMergeTest, LayersStayShownOrHidden) {
    const std::string uses = "/Resources<</Properties<</a 6 0 R/b 7 0 R>>>>";
    const Objects layers = {
        {6, "<</Type/OCG/Name(six)>>"}, {7, "<</Type/OCG/Name(seven)>>"}, {8, "<</Type/OCG/Name(unused)>>"}};
    const auto make = [&](const std::string& usual) {
        Objects objects = OnePage("/OCProperties<</OCGs[6 0 R 7 0 R 8 0 R]/D<<" + usual + ">>>>", uses);
        objects.insert(objects.end(), layers.begin(), layers.end());
        return PdfOf(objects);
    };
    ASSERT_EQ(Merge({make("/OFF[7 0 R 8 0 R]"), make("/BaseState/OFF/ON[7 0 R]"),
                     make("/AS[<</Event/Print/Category[/Print]/OCGs[6 0 R]>>]"), MakePdf(1)}),
              PdfResult::kDone);
    EXPECT_EQ(library.m_calls, 0);
    const std::string merged = Merged();
    const std::string usual = "root /OCProperties /D ";
    EXPECT_EQ(ObjectAt(merged, usual + "/OFF"), "[ " + ObjectAt(merged, "0 /Resources /Properties /b") + ' ' +
                                                    ObjectAt(merged, "1 /Resources /Properties /a") + " ]");
    const std::string automatic = ObjectAt(merged, "2 /Resources /Properties /a");
    EXPECT_EQ(ObjectAt(merged, usual + "/AS"),
              "[ << /Category [ /Print ] /Event /Print /OCGs [ " + automatic + " ] >> ]");
    EXPECT_EQ(ObjectAt(merged, "root /OCProperties /OCGs 5"),
              ObjectAt(merged, "2 /Resources /Properties /b"));
    EXPECT_EQ(DescribePages(merged), "7 7 7 0 ");
}

TEST_F(PdfMergeTest, TheLibraryOpensWhatIsProtectedOrDamaged) {
    const std::string pdf = MakePdf(3);
    EXPECT_EQ(Merge({MakePdf(1), Encrypted(pdf, Cipher::kAes256, "", true),
                     Encrypted(pdf, Cipher::kRc4Of128, "secret", false), MakePdf(1)},
                    "secret"),
              PdfResult::kDone);
    EXPECT_EQ(DescribePages(Merged()), "0 0 1 2 0 1 2 0 ");
    EXPECT_EQ(library.m_calls, 2);
    EXPECT_EQ(Merge({pdf.substr(0, pdf.rfind("startxref"))}), PdfResult::kDone)
        << "nothing tells where to begin";
    EXPECT_EQ(DescribePages(Merged()), "0 1 2 ");
    const std::string before = Merged();
    EXPECT_EQ(Merge({pdf, Encrypted(pdf, Cipher::kAes128, "other", false)}, "secret"),
              PdfResult::kWrongPassword);
    EXPECT_EQ(Merge({pdf, "junk"}), PdfResult::kUnreadable);
    EXPECT_EQ(Merge({""}), PdfResult::kUnreadable);
    EXPECT_EQ(Merge({}), PdfResult::kNoSuchPages);
    EXPECT_EQ(Merged(), before);
    EXPECT_FALSE(folder.Has("scratch/cleaned.pdf"));
}

TEST_F(PdfMergeTest, FieldsGetTheLooksThatTheyLack) {
    Objects objects = OnePage(
        "/AcroForm<</Fields[6 0 R]/NeedAppearances true/DA(/Helv 12 Tf 0 g)/DR<</Font<</Helv 7 0 R>>>>>>",
        "/Annots[6 0 R]");
    objects.push_back({6,
                       "<</Type/Annot/Subtype/Widget/FT/Tx/T(name)/V(filled)/Rect[0 0 99 20]/F 4/P 4 0 R"
                       "/DA(/Helv 12 Tf 0 g)>>"});
    objects.push_back({7, "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"});
    ASSERT_EQ(Merge({PdfOf(objects)}), PdfResult::kDone);
    EXPECT_EQ(library.m_calls, 1);
    const std::string merged = Merged();
    EXPECT_THAT(ObjectAt(merged, "0 /Annots 0 /AP /N data"), HasSubstr("(filled) Tj"));
    EXPECT_FALSE(IsRefused(PdfOf(OnePage("/AcroForm<</Fields[]>>")))) << "a form without fields is none";
}

// Anything strange is left to the library, before or after a part was copied; the next file is not harmed.
TEST_F(PdfMergeTest, RefusesWhatIsNotAsItShouldBe) {
    ASSERT_FALSE(IsRefused(PdfOf(OnePage())));
    const auto with = [](int number, const std::string& body) {
        Objects objects = OnePage("", "/X 6 0 R");
        objects.push_back({6, "(six)"});
        objects[static_cast<std::size_t>(number - 1)].second = body;
        return PdfOf(objects);
    };
    const std::string node = "<</Type/Pages/Parent 2 0 R/Count 1/Kids[4 0 R]>>";
    const std::string page = "<</Type/Page/Parent 3 0 R/Contents 5 0 R>>";
    const std::vector<std::string> strange = {
        with(2, "<</Type/Pages/Count 2/Kids[3 0 R]>>"),         // miscounted
        with(2, "<</Type/Pages/Count 2/Kids[3 0 R 3 0 R]>>"),   // a kid twice
        with(2, "<</Type/Pages/Count 1/Kids[3 0 R 2 0 R]>>"),   // a kid of its own
        with(2, "<</Type/Pages/Count 1/Kids[3 0 R 44 0 R]>>"),  // a kid that is not there
        with(2, "<</Type/Pages/Parent 3 0 R/Count 1/Kids[3 0 R]>>"),
        with(3, Replaced(node, "/Parent 2", "/Parent 4")),
        with(3, Replaced(node, "/Type/Pages", "")),
        with(4, Replaced(page, "/Type/Page", "")),
        with(4, Replaced(page, "5 0 R", "5 1 R")),               // of another generation
        with(5, "<</Length 8>>\nstream\n(Page 7,)\nendstream"),  // too short
        with(5, "<</Length 11>>\nstream\n(Page 7,)\nendstream"),
        with(5, "<</Length 999999999999>>\nstream\n(Page 7,)\nendstream"),
        with(5, "<</Length 5 0 R>>\nstream\n(Page 7,)\nendstream"),  // its own length
        with(5, "<</Length 44 0 R>>\nstream\n(Page 7,)\nendstream"),
        with(5, "<<>>\nstream\n(Page 7,)\nendstream"),
        with(6, "5 0 R"),
        with(6, "[1 2"),
        with(6, "[(] >>)"),
        with(6, "<<]>>"),
        with(6, "[endobj]"),
        with(6, "[1 R]"),
        with(6, "(open"),
        with(6, std::string(5000, '[') + std::string(5000, ']')),
        Replaced(PdfOf(OnePage()), "4 0 obj", "5 0 obj"),
        Replaced(PdfOf(OnePage()), "endobj\n5 0 obj", "edobj\n5 0 obj"),
    };
    for (const std::string& pdf : strange) EXPECT_TRUE(IsRefused(pdf)) << pdf;

    library.m_refuses = true;
    PdfMerge merge(files, library, target, folder.PathOf("scratch"));
    for (const std::string& pdf : strange) EXPECT_EQ(merge.Add(Put(pdf), ""), PdfResult::kGaveUp);
    EXPECT_EQ(merge.Add(Put(MakePdf(2)), ""), PdfResult::kDone);
    EXPECT_EQ(merge.Add(folder.PathOf("missing.pdf"), ""), PdfResult::kUnreadable);
    EXPECT_EQ(merge.Finish(), PdfResult::kDone);
    EXPECT_EQ(DescribePages(Merged()), "0 1 ");
}

// A small file in which streams, or strings, hold each other would grow without end.
TEST_F(PdfMergeTest, RefusesObjectsThatOverlap) {
    const std::string pdf = PdfOf(OnePage("", "/X 6 0 R"));
    const std::size_t start = pdf.size();
    constexpr int kNested = 300;
    std::string nested;
    std::string rows = Format("xref\n6 %d\n", kNested + 1);
    std::string list = "6 0 obj\n[";
    for (int i = 0; i < kNested; ++i) list += Format("%d 0 R ", 7 + i);
    list += "]\nendobj\n";
    rows += Format("%010d 00000 n \n", start);
    std::size_t offset = start + list.size();
    for (int i = 0; i < kNested; ++i) {
        const std::string open = Format("%d 0 obj\n(", 7 + i);
        rows += Format("%010d 00000 n \n", offset);
        nested += open;
        offset += open.size();
    }
    for (int i = 0; i < kNested; ++i) nested += ")\nendobj\n";
    const std::string whole = pdf + list + nested + rows +
                              Format("trailer\n<</Root 1 0 R/Prev %d>>\nstartxref\n%d\n%%%%EOF\n",
                                     StartOffset(pdf), start + list.size() + nested.size());
    EXPECT_TRUE(IsRefused(whole));
}

TEST_F(PdfMergeTest, ObjectStreamsMustHoldWhatTheySay) {
    const std::string good = WithObjectStreams(MakePdf(4));
    ASSERT_FALSE(IsRefused(good));
    for (const char* key : {"/Type /ObjStm", "/First ", "/N "})
        EXPECT_TRUE(IsRefused(Replaced(good, key, std::string(1, key[0]) + "x" + (key + 2)))) << key;
    int strange = 0;
    for (std::size_t i = 0; i < good.size();
         i += 7) {  // no flipped bit gets the file further than to a failure
        std::string flipped = good;
        flipped[i] = static_cast<char>(flipped[i] ^ 0x11);
        strange += IsRefused(flipped) ? 1 : 0;
    }
    EXPECT_GT(strange, static_cast<int>(good.size() / 14));
}

// Files that are not read at once.
TEST_F(PdfMergeTest, CopiesLongFilesPieceByPiece) {
    Objects objects = OnePage("", "/X 6 0 R/Y 7 0 R");
    std::string data(std::size_t{18} << 20, 'd');
    for (std::size_t i = 0; i < data.size(); i += 4099) data[i] = static_cast<char>(i);
    objects.push_back({6, Format("<</Length %d>>stream\n", data.size()) + data + "\nendstream"});
    objects.push_back({7, "[" + std::string(200'000, ' ') + "5 0 R]"});
    ASSERT_EQ(Merge({PdfOf(objects), MakePdf(1)}), PdfResult::kDone);
    EXPECT_EQ(library.m_calls, 0);
    EXPECT_NE(Merged().find(data), std::string::npos);
    EXPECT_EQ(DescribePages(Merged()), "7 0 ");
}

TEST_F(PdfMergeTest, AFailureLeavesTheTargetAsItWas) {
    folder.Write("out.pdf", "as it was");
    const std::vector<std::string> two = {MakePdf(2), MakePdf(3)};
    for (const FaultyFiles::Call call :
         {FaultyFiles::Call::kOpenForWriting, FaultyFiles::Call::kWrite, FaultyFiles::Call::kFlushToDisk,
          FaultyFiles::Call::kClose, FaultyFiles::Call::kRename}) {
        files.FailOnce(call, FileResult::kNoSpace);
        EXPECT_EQ(Merge(two), PdfResult::kNotWritten);
        EXPECT_EQ(Merged(), "as it was");
    }
    files.FailAlways(FaultyFiles::Call::kReadAt, FileResult::kFailed);
    EXPECT_NE(Merge(two), PdfResult::kDone);
    files.Heal();
    EXPECT_EQ(Merge(two), PdfResult::kDone);
    EXPECT_EQ(folder.Has("~qpr0.tmp"), false);
}

TEST_F(PdfMergeTest, AllOrNothingAndItNamesTheFile) {
    PdfMergeRequest request;
    request.scratchFolder = folder.PathOf("scratch");
    request.target = Put(MakePdf(2));  // one of the inputs
    request.inputs = {Put(MakePdf(1)), request.target, request.target};
    std::vector<std::size_t> told;
    request.progress = [&](std::size_t done) { return told.push_back(done), true; };
    PdfMergeOutcome outcome = MergePdfs(files, library, request);
    EXPECT_EQ(outcome.end, PdfMergeOutcome::End::kDone) << outcome.message;
    EXPECT_EQ(outcome.pages, 5);
    EXPECT_EQ(told, (std::vector<std::size_t>{0, 1, 2}));
    const std::string before = folder.Read("in1.pdf");
    EXPECT_EQ(DescribePages(before), "0 0 1 0 1 ");

    request.inputs.push_back(Put("junk"));
    outcome = MergePdfs(files, library, request);
    EXPECT_EQ(outcome.end, PdfMergeOutcome::End::kFailed);
    EXPECT_EQ(outcome.message, request.inputs.back() + ": the file is no PDF, whatever its name says");
    request.progress = [](std::size_t done) { return done < 2; };
    EXPECT_EQ(MergePdfs(files, library, request).end, PdfMergeOutcome::End::kStopped);
    request.target = folder.PathOf("no/folder.pdf");
    EXPECT_EQ(MergePdfs(files, library, request).message, request.target + ": the new file can't be written");
    EXPECT_EQ(folder.Read("in1.pdf"), before);
}

}  // namespace
}  // namespace quirepress
