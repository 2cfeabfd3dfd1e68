#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/path.h"
#include "core/print_list.h"
#include "documents/pdf_counter.h"
#include "fakes/fake_shell.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"

namespace quirepress {

// A print list over real files in a temporary folder.
class ListFixture : public testing::Test, protected Surroundings {
protected:
    // Never asked: the counter tells the pages of whole files itself.
    class NoLibrary : public PdfLibrary {
    public:
        long long CountPages(std::string_view, bool, std::string_view) override { return -1; }
    };

    static std::string MakePdf(int pages);

    int Insert(std::string_view path, int selectMode = 1, const ItemTexts& texts = {}) {
        return m_list.InsertFileIntoList(path, selectMode, "", texts);
    }
    std::string TextOf(int row, Column column) const { return std::string(m_list.Text(row, column)); }
    // "Yes|title|Ready." for each row.
    std::vector<std::string> Rows() const;
    // Titles of all rows.
    std::vector<std::string> Titles() const;
    std::string DebugText() const { return folder.Read("qpr.log"); }

    FakeShell m_shell;
    NoLibrary m_pdfLibrary;
    PdfCounter m_pdfCounter{files, m_pdfLibrary};
    GeneralOptions m_options;
    bool m_keepGoing = true;
    PrintList m_list{PrintListServices{files, m_shell, clock, machine, loop, prompts, debugLog, m_pdfCounter,
                                       m_options, WithTrailingSeparator(folder.Path()),
                                       [this] { return m_keepGoing; }}};
};

}  // namespace quirepress
