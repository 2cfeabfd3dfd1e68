#include "unit/core/list_fixture.h"

#include "base/format.h"
#include "base/path.h"

namespace quirepress {

std::string ListFixture::MakePdf(int pages) {
    std::string kids;
    std::vector<std::string> objects = {"<</Type/Catalog/Pages 2 0 R>>", ""};
    for (int i = 0; i < pages; ++i) {
        kids += Format("%d 0 R ", i + 3);
        objects.emplace_back("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>");
    }
    objects[1] = Format("<</Type/Pages/Count %d/Kids[%s]>>", pages, kids);
    std::string pdf = "%PDF-1.4\n";
    std::string table = Format("xref\n0 %d\n0000000000 65535 f \n", static_cast<int>(objects.size()) + 1);
    int number = 0;
    for (const std::string& object : objects) {
        table += Format("%010d 00000 n \n", pdf.size());
        pdf += Format("%d 0 obj\n%s\nendobj\n", ++number, object);
    }
    return pdf + table +
           Format("trailer\n<</Size %d/Root 1 0 R>>\nstartxref\n%d\n%%%%EOF\n", number + 1, pdf.size());
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
