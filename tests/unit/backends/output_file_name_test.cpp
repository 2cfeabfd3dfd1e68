#include "backends/output_file_name.h"

#include <gtest/gtest.h>

#include <set>

#include "base/path.h"
#include "settings/print_to_file_options.h"

namespace quirepress {
namespace {

using Fate = OutputFileName::Fate;

class OutputFileNameTest : public testing::Test {
protected:
    OutputFileName Make(std::string_view document) {
        return MakeOutputFileName(options, document,
                                  [this](const std::string& path) { return existing.count(path) != 0; });
    }
    void Expect(std::string_view document, const std::string& path, Fate fate) {
        const OutputFileName name = Make(document);
        EXPECT_EQ(name.path, path);
        EXPECT_EQ(name.fate, fate);
    }

    const std::string source = JoinPath("/in", "test.doc");
    PrintToFileOptions options;
    std::set<std::string> existing;
};

TEST_F(OutputFileNameTest, FollowsTheOptions) {
    options.m_path = "/out";
    options.m_extension = ".ps";
    const std::string plain = JoinPath("/out", "test.ps");
    Expect(source, plain, Fate::kNew);
    Expect(JoinPath("/in", ".hidden"), JoinPath("/out", ".hidden.ps"), Fate::kNew);

    existing = {plain};
    Expect(source, plain, Fate::kTaken);
    options.m_overwrite = true;
    Expect(source, plain, Fate::kReplaces);
    options.m_versionFile = true;
    Expect(source, JoinPath("/out", "test_v0001.ps"), Fate::kNew);
    existing.insert(JoinPath("/out", "test_v0001.ps"));
    Expect(source, JoinPath("/out", "test_v0002.ps"), Fate::kNew);

    options.m_useSourcePath = true;
    Expect(source, JoinPath("/in", "test.ps"), Fate::kNew);
}

TEST_F(OutputFileNameTest, IsNeverThatOfTheDocumentItself) {
    const std::string document = JoinPath("/in", "test.pdf");
    options.m_extension = ".pdf";
    options.m_useSourcePath = true;
    options.m_overwrite = true;
    existing = {document};
    Expect(document, JoinPath("/in", "test_v0001.pdf"), Fate::kNew);
}

TEST_F(OutputFileNameTest, GivesUpWhereEveryVersionExists) {
    options.m_versionFile = true;
    const OutputFileName name = MakeOutputFileName(options, source, [](const std::string&) { return true; });
    EXPECT_EQ(name.fate, Fate::kTaken);
}

}  // namespace
}  // namespace quirepress
