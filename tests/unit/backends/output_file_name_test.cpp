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
    void Expect(std::string_view document, const std::string& path, Fate fate) {
        const OutputFileName name = MakeOutputFileName(
            options, document, [this](const std::string& each) { return existing.count(each) != 0; });
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
    // Never that of the document itself.
    options.m_versionFile = false;
    existing = {JoinPath("/in", "a.ps")};
    Expect(JoinPath("/in", "a.ps"), JoinPath("/in", "a_v0001.ps"), Fate::kNew);
    options.m_versionFile = true;
    const auto isThere = [](const std::string&) { return true; };
    EXPECT_EQ(MakeOutputFileName(options, source, isThere).fate, Fate::kTaken);
}

}  // namespace
}  // namespace quirepress
