#include "documents/pdf_counter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "documents/qpdf_library.h"
#include "fakes/memory_file.h"
#include "fakes/surroundings.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

using namespace std::string_literals;

// The real library, and a record of what it was asked.
class RecordingLibrary : public PdfLibrary {
public:
    explicit RecordingLibrary(Files& files) : m_library(files) {}
    long long CountPages(std::string_view path, bool full, std::string_view password) override {
        ++calls;
        return fails ? -1 : m_library.CountPages(path, full, password);
    }

    int calls = 0;
    bool fails = false;

private:
    QpdfLibrary m_library;
};

class PdfCounterTest : public testing::Test, protected Surroundings {
protected:
    int Count(const std::string& pdf, bool full = false, const std::string& password = "") {
        status = "as it was";
        return counter.CountPages(folder.Write("sample.pdf", pdf), full, password, status);
    }

    RecordingLibrary library{files};
    PdfCounter counter{files, library};
    std::string status;
};

TEST_F(PdfCounterTest, AsksTheLibraryOnlyWhenItMust) {
    const std::string pdf = MakePdf(12);
    EXPECT_EQ(Count(pdf), 12);
    EXPECT_EQ(Count(WithObjectStreams(pdf)), 12);
    EXPECT_EQ(Count(pdf.substr(0, pdf.rfind("startxref"))), 12);
    EXPECT_EQ(Count(Encrypted(pdf, Cipher::kAes128, "secret", false)), 12);
    EXPECT_EQ(Count("<html>no such file</html>"), -1);
    EXPECT_EQ(library.calls, 0);
    EXPECT_EQ(Count(Encrypted(pdf, Cipher::kAes256, "", true)), 12);
    EXPECT_EQ(library.calls, 1);
    EXPECT_EQ(status, "as it was");
}

TEST_F(PdfCounterTest, PasswordsOpenWhatIsHidden) {
    for (const Cipher cipher : {Cipher::kRc4Of128, Cipher::kAes128, Cipher::kAes256}) {
        const std::string pdf = Encrypted(MakePdf(12), cipher, "secret", true);
        EXPECT_EQ(Count(pdf, false, "secret"), 12);
        EXPECT_EQ(Count(pdf, true, "owner"), 12);
        EXPECT_EQ(Count(pdf, false, "wrong"), -1);
        EXPECT_EQ(status, "No");
    }
}

TEST_F(PdfCounterTest, FullCountsThePagesThatAreThere) {
    const std::string pdf = MakePdf(12, 100);
    const std::string lying = Replaced(pdf, "/Count 12 ", "/Count 19 ");
    EXPECT_EQ(Count(lying), 19) << "the tree is believed";
    EXPECT_EQ(Count(lying, true), 12);
    const std::string none =
        MakePdfOf({{1, "<< /Type /Catalog /Pages 2 0 R >>"}, {2, "<< /Type /Pages /Kids [] /Count 0 >>"}},
                  "/Root 1 0 R /Size 3");
    EXPECT_EQ(Count(none), 0);
    EXPECT_EQ(Count(none, true), 0);
    library.fails = true;
    EXPECT_EQ(Count(lying, true), 12) << "by the objects, without the library";
    EXPECT_EQ(Count(none), -1);
}

TEST_F(PdfCounterTest, WhatCannotBeReadSaysNo) {
    for (const std::string& path : {folder.PathOf("missing.pdf"), folder.Path(), std::string()}) {
        for (const bool full : {false, true}) {
            status = "as it was";
            EXPECT_EQ(counter.CountPages(path, full, "", status), -1) << path;
            EXPECT_EQ(status, "No") << path;
        }
        status = "as it was";
        EXPECT_EQ(counter.ScanPages(path, status), -1) << path;
        EXPECT_EQ(status, "No") << path;
    }
    EXPECT_EQ(library.calls, 0);
}

TEST(QpdfLibraryTest, AFailingReadIsNoCrash) {
    const std::string pdf = MakePdf(100);
    for (std::size_t limit = 0; limit < pdf.size(); limit += 997) {
        MemoryFile file(pdf);
        file.FailAt(static_cast<std::int64_t>(limit));
        EXPECT_EQ(CountPagesByQpdf(file, true, ""), -1);
    }
}

// The rule of the text scan, position by position.
int ScanSlowly(const std::string& bytes) {
    const std::string patterns[] = {"/Type /Page ",  "/Type\n/Page\n", "/Type /Page\n", "/Type /Page ",
                                    "/Type /Page\r", "/Type/Page\r",   "/Type/Page\n"};
    const std::string buffer = bytes + std::string(32, '\0');
    int count = 0;
    for (std::size_t p = 0; p < bytes.size();) {
        const char c = buffer[++p];
        if (c != '\r' && c != '\n' && c != ' ' && c != '<') continue;
        const std::string slice = buffer.substr(p + 1, 12).c_str();
        for (const std::string& pattern : patterns) {
            if (slice.find(pattern) == std::string::npos) continue;
            ++count;
            p += 5;
            break;
        }
    }
    return count;
}

int Scan(const std::string& bytes) {
    MemoryFile file(bytes);
    return ScanPdfPages(file, {});
}

TEST(PdfScan, CountsOnlyTheFixedWays) {
    EXPECT_EQ(Scan("1 0 obj << /Type /Page >> endobj <</Type/Page\r>> xx\n/Type\n/Page\n"), 3);
    EXPECT_EQ(Scan("xx << /Type /Pages >> << /Type /Page>> <</Type/Page/Parent"), 0);
    EXPECT_EQ(Scan("</Type/Page\n"), 0) << "the first byte is never examined";
    EXPECT_EQ(Scan(""), 0);
}

TEST(PdfScan, AgreesWithTheRulePositionByPosition) {
    std::mt19937 random(5);
    const std::string pieces[] = {"/Type",        "/Page",        " ",   "\n", "\r", "<", "x",
                                  "/Type /Page ", "/Type/Page\n", "\0"s, "/"};
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (unsigned left = random() % 60; left > 0; --left) bytes += pieces[random() % std::size(pieces)];
        ASSERT_EQ(Scan(bytes), ScanSlowly(bytes)) << "round " << round << ": " << bytes;
    }
    // At every place around the border of two blocks.
    constexpr std::size_t kBlock = 256 * 1024;
    for (std::size_t offset = kBlock - 40; offset < kBlock + 20; ++offset) {
        for (const char* text : {"</Type /Page ", " _/Type/Page\r", "</Type/Page\n"}) {
            std::string bytes(offset, 'x');
            bytes += text + std::string(offset % 3 == 0 ? 0 : 300'000, 'x') + " /Type /Page ";
            ASSERT_EQ(Scan(bytes), 2) << offset << text;
        }
    }
}

TEST(PdfScan, TellsItsProgressAndStops) {
    MemoryFile file(std::string(3'000'000, 'x') + " /Type /Page ");
    std::vector<double> seen;
    const auto note = [&](double percent) {
        seen.push_back(percent);
        return true;
    };
    EXPECT_EQ(ScanPdfPages(file, note), 1);
    ASSERT_GT(seen.size(), 5U);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_EQ(seen.back(), 100.0);
    EXPECT_EQ(ScanPdfPages(file, [](double percent) { return percent < 50; }), 0);
}

}  // namespace
}  // namespace quirepress
