#include "unit/core/list_fixture.h"

#include "base/path.h"
#include "fakes/small_pdf.h"

namespace quirepress {

std::string ListFixture::MakePdf(int pages) {
    return MakeSmallPdf(std::vector<std::string>(static_cast<std::size_t>(pages)));
}

std::vector<std::string> ListFixture::Rows() const {
    std::vector<std::string> rows;
    for (int row = 0; row < m_list.RowCount(); ++row)
        rows.push_back(TextOf(row, kColumnSelected) + "|" +
                       std::string(FileTitle(m_list.Text(row, kColumnFilename))) + "|" +
                       TextOf(row, kColumnStatus));
    return rows;
}

std::vector<std::string> ListFixture::Titles() const {
    std::vector<std::string> titles;
    for (int row = 0; row < m_list.RowCount(); ++row)
        titles.emplace_back(FileTitle(m_list.Text(row, kColumnFilename)));
    return titles;
}

}  // namespace quirepress
