#include "backends/candidate_names.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/path.h"
#include "base/text.h"
#include "fakes/surroundings.h"

namespace quirepress {
namespace {

// The traced texts behind their labels, in the order of the candidates.
std::vector<std::string> NamesOf(std::string_view path, std::string_view shortPath) {
    Surroundings around;
    around.debugLog.Open(around.files, around.folder.PathOf("qpr.log"));
    CandidateNames(path, shortPath).Trace(around.debugLog);
    const std::string log = around.folder.Read("qpr.log");
    std::vector<std::string> names;
    for (std::string_view line : SplitAt(log, '\n'))
        if (!line.empty())
            names.emplace_back(line.substr(line.find(": ") + 2, line.rfind('\r') - line.find(": ") - 2));
    return names;
}

TEST(CandidateNames, AreBuiltFromThePathAndItsShortForm) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(NamesOf("/in/Report (1).pdf", "/in/REPORT~1.PDF"),
              (Names{"/in/Report (1).pdf", "/in/REPORT~1.PDF", "Report (1).pdf.PDF", "Report (1)",
                     "Report (1).pdf", "Report _1_.pdf", "report~1", "report~1.pdf"}));
    EXPECT_EQ(NamesOf("/in/a_title_of_more_than_thirty-one_characters.Pdf", "x")[2],
              "a_title_of_more_than_thirty-one.PDF");
    // What cannot be built must not be part of every name.
    EXPECT_EQ(NamesOf("/in/README", ""),
              (Names{"/in/README", "No way will it match", "No way will it match again",
                     "No way will it match again", "README", "README", "No way will it match again",
                     "No way will it match again"}));
    EXPECT_EQ(NamesOf("/in/.profile", "/in/.profile")[3], "No way will it match again");
    for (const std::string& name : NamesOf("", "")) EXPECT_TRUE(StartsWith(name, "No way will it match"));
}

TEST(CandidateNames, HaveAtMost255BytesOfWholeCharacters) {
    const std::string folder = "/in/" + std::string(249, 'f');
    EXPECT_EQ(NamesOf(folder + "/a\xC3\xA4.txt", "")[0], folder + "/a");
    EXPECT_EQ(NamesOf(folder + "/ab\xC3\xA4.txt", "")[0], folder + "/a");
    EXPECT_EQ(NamesOf(std::string(300, '\xBF'), "")[0].size(), 252U);
}

TEST(CandidateNames, MatchAnywhereInADocumentName) {
    const CandidateNames names("/in/Invoice 12.docx", "/in/INVOIC~1.DOC");
    for (const char* document :
         {"/in/Invoice 12.docx", "Microsoft Word - Invoice 12.docx", "Invoice 12", "Invoice 123.pdf",
          "file:///in/Invoice 12.docx#1", "C:\\in\\INVOIC~1.DOC", "invoic~1", "MAIL - Invoic~1.doc"})
        EXPECT_TRUE(names.Matches(document)) << document;
    for (const char* document : {"Invoice 13.docx", "INVOICE 12.DOCX", "Invoice", "", "12.docx"})
        EXPECT_FALSE(names.Matches(document)) << document;
    for (const char* generic :
         {"print job", "Remote Print Job", "My Document", "ME10 plot", "Full page print"})
        EXPECT_TRUE(names.Matches(generic)) << generic;
    EXPECT_TRUE(CandidateNames("/in/Report (1).pdf", "").Matches("Report _1_.pdf"));
    EXPECT_FALSE(CandidateNames("", "").Matches("anything"));
}

}  // namespace
}  // namespace quirepress
