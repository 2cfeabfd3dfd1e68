#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "documents/page_image.h"
#include "documents/pdf_colors.h"
#include "documents/pdf_content_tokens.h"
#include "documents/pdf_worker_messages.h"
#include "fakes/memory_file.h"

namespace quirepress {
namespace {

constexpr int kMostLooks = 200;

void Require(bool holds) {
    if (!holds) std::abort();
}

// Whole files, as they come.
void CheckFile(const std::string& bytes) {
    MemoryFile file(bytes);
    std::vector<PageColor> pages;
    int looks = 0;
    const auto isTimeUp = [&] { return ++looks > kMostLooks; };
    const PdfResult result = InspectPdfColors(file, "", {}, isTimeUp, pages);
    Require((result == PdfResult::kDone) == !pages.empty());
    PdfResult read = PdfResult::kGaveUp;
    std::vector<PageColor> same;
    Require(ParseResult(FormatResult(result, pages), read, same) && read == result && same == pages);
}

// The bytes as the content of a page that has one of everything.
void CheckContent(const std::string& content) {
    std::string pdf = "%PDF-1.5\n";
    std::string table;
    int count = 1;
    const auto add = [&](const std::string& body) {
        const std::string offset = std::to_string(pdf.size());
        table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
        pdf += std::to_string(count++) + " 0 obj\n" + body + "\nendobj\n";
    };
    add("<< /Type /Catalog /Pages 2 0 R >>");
    add("<< /Type /Pages /Count 1 /Kids [ 3 0 R ] >>");
    add("<< /Type /Page /Parent 2 0 R /Contents 4 0 R /Resources << /XObject << /X 5 0 R /I 6 0 R >>"
        " /ColorSpace << /P [/Pattern /DeviceRGB] /S [/Separation /Red /DeviceRGB 7 0 R]"
        " /I [/Indexed /DeviceRGB 1 <000000FF0000>] >> /Pattern << /T 5 0 R /H << /PatternType 2 /Shading 8 "
        "0 R >> >>"
        " /Shading << /H 8 0 R >> /Font << /F << /Subtype /Type3 /CharProcs << /a 4 0 R >> >> >> >> >>");
    add("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream");
    add("<< /Subtype /Form /PatternType 1 /PaintType 1 /Length 11 >>\nstream\n/X Do 1 g f\nendstream");
    add("<< /Subtype /Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceRGB /Length 3 "
        ">>\nstream\n"
        "abc\nendstream");
    add("<< /FunctionType 2 /N 1 /C0 [1 1 1] /C1 [1 0 0] >>");
    add("<< /ColorSpace /DeviceRGB /Function 7 0 R >>");
    const std::string start = std::to_string(pdf.size());
    pdf += "xref\n0 " + std::to_string(count) + "\n0000000000 65535 f \n" + table + "trailer\n<< /Size " +
           std::to_string(count) + " /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
    CheckFile(pdf);
}

void CheckTokens(const std::string& bytes) {
    ContentTokens tokens(bytes);
    std::size_t count = 0;
    for (ContentToken token = tokens.Take(); token.kind != ContentTokenKind::kEnd; token = tokens.Take()) {
        Require(++count <= bytes.size());
        std::string_view dictionary;
        if (token.text == "BI" && tokens.TakeInlineDictionary(dictionary)) tokens.SkipInlineData(-1);
    }
}

void CheckImages(const std::string& bytes) {
    PageImages whole{GreyRule()};
    PageImages pieces{GreyRule()};
    const bool good = whole.Take(bytes);
    bool goodPieces = true;
    for (std::size_t at = 0; at < bytes.size() && goodPieces; at += 3)
        goodPieces = pieces.Take(bytes.substr(at, 3));
    Require(good == goodPieces && (!good || whole.Colors() == pieces.Colors()));
}

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.compare(0, 5, "%PDF-") == 0) {
        quirepress::CheckFile(bytes);
    } else if (bytes.compare(0, 1, "P") == 0) {
        quirepress::CheckImages(bytes);
    } else {
        quirepress::CheckTokens(bytes);
        quirepress::CheckContent(bytes);
    }
    return 0;
}
