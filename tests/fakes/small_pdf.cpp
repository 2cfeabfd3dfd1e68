#include "fakes/small_pdf.h"

#include <map>

#include "base/format.h"

namespace quirepress {

namespace {

// `objects` behind `pdf`, and a table in as few sections as their numbers allow.
std::string AppendObjects(std::string pdf, const PdfBodies& objects, const std::string& trailerKeys) {
    std::map<int, std::string> entries;
    if (pdf.find("startxref") == std::string::npos) entries[0] = "0000000000 65535 f \n";
    for (const auto& [number, body] : objects) {
        entries[number] = Format("%010d 00000 n \n", pdf.size());
        pdf += Format("%d 0 obj\n%s\nendobj\n", number, body);
    }
    std::string table = "xref\n";
    for (auto first = entries.begin(); first != entries.end();) {
        std::string rows;
        int count = 0;
        const int number = first->first;
        for (; first != entries.end() && first->first == number + count; ++first, ++count)
            rows += first->second;
        table += Format("%d %d\n", number, count) + rows;
    }
    return pdf + table + Format("trailer\n<< %s >>\nstartxref\n%d\n%%%%EOF\n", trailerKeys, pdf.size());
}

}  // namespace

std::string MakePdfOf(const PdfBodies& objects, const std::string& trailerKeys) {
    return AppendObjects("%PDF-1.5\n%\xE2\xE3\xCF\xD3\n", objects, trailerKeys);
}

std::string WithUpdate(const std::string& pdf, const PdfBodies& objects, const std::string& trailerKeys) {
    return AppendObjects(pdf, objects, trailerKeys + Format(" /Prev %d", StartOffset(pdf)));
}

std::size_t StartOffset(const std::string& pdf) {
    const std::string word = "startxref\n";
    return std::stoul(pdf.substr(pdf.rfind(word) + word.size()));
}

std::string MakeSmallPdf(const std::vector<std::string>& contents, bool isDamaged) {
    std::string kids;
    int next = 3;
    PdfBodies objects;
    for (const std::string& content : contents) {
        kids += Format("%d 0 R ", next);
        objects.emplace_back(
            next, Format("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Contents %d 0 R >>", next + 1));
        objects.emplace_back(next + 1,
                             Format("<< /Length %d >>\nstream\n%s\nendstream", content.size(), content));
        next += 2;
    }
    objects.emplace_back(1, "<< /Type /Catalog /Pages 2 0 R >>");
    objects.emplace_back(2, Format("<< /Type /Pages /Count %d /Kids [ %s] >>", contents.size(), kids));
    const std::string pdf = MakePdfOf(objects, Format("/Root 1 0 R /Size %d", next));
    return isDamaged ? pdf.substr(0, pdf.rfind("startxref")) + "startxref\n0\n%%EOF\n" : pdf;
}

}  // namespace quirepress
