#include "fakes/small_pdf.h"

#include "base/format.h"

namespace quirepress {

std::string MakeSmallPdf(const std::vector<std::string>& contents, bool isDamaged) {
    std::string kids;
    std::vector<std::string> objects(2);
    for (const std::string& content : contents) {
        const std::size_t page = objects.size() + 1;
        kids += Format("%d 0 R ", page);
        objects.push_back(
            Format("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Contents %d 0 R >>", page + 1));
        objects.push_back(Format("<< /Length %d >>\nstream\n%s\nendstream", content.size(), content));
    }
    objects[0] = "<< /Type /Catalog /Pages 2 0 R >>";
    objects[1] = Format("<< /Type /Pages /Count %d /Kids [ %s] >>", contents.size(), kids);
    std::string pdf = "%PDF-1.4\n";
    std::string table = Format("xref\n0 %d\n0000000000 65535 f \n", objects.size() + 1);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        table += Format("%010d 00000 n \n", pdf.size());
        pdf += Format("%d 0 obj\n%s\nendobj\n", i + 1, objects[i]);
    }
    const std::size_t start = isDamaged ? 0 : pdf.size();
    return pdf + table +
           Format("trailer\n<< /Root 1 0 R /Size %d >>\nstartxref\n%d\n%%%%EOF\n", objects.size() + 1, start);
}

}  // namespace quirepress
