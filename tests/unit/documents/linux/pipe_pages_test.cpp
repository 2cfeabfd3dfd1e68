#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "documents/page_counts.h"
#include "documents/pdf_counter.h"
#include "fakes/temporary_folder.h"
#include "platform/files.h"
#include "platform/services.h"

namespace quirepress {
namespace {

class NoLibrary : public PdfLibrary {
public:
    long long CountPages(std::string_view, bool, std::string_view) override { return -1; }
};

// Nobody writes into it: who opened it would wait for ever.
TEST(PagesOfAPipe, AreUnknownAtOnce) {
    const TemporaryFolder folder;
    const std::string pipe = folder.PathOf("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
    const Services services = MakeSystemServices();
    NoLibrary library;
    PdfCounter pdfCounter(*services.files, library);
    std::string postScript;
    std::string pcl;
    std::string pdf;
    std::string fullPdf;
    std::string scan;
    EXPECT_EQ(CountPostScriptPages(*services.files, pipe, postScript), -1);
    EXPECT_EQ(CountPclPages(*services.files, pipe, pcl), -1);
    EXPECT_EQ(pdfCounter.CountPages(pipe, false, "", pdf), -1);
    EXPECT_EQ(pdfCounter.CountPages(pipe, true, "", fullPdf), -1);
    EXPECT_EQ(pdfCounter.ScanPages(pipe, scan, {}), -1);
    for (const std::string& status : {postScript, pcl, pdf, fullPdf, scan}) EXPECT_EQ(status, "No");
}

}  // namespace
}  // namespace quirepress
