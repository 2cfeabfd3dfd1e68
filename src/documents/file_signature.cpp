#include "documents/file_signature.h"

#include <algorithm>
#include <string>

#include "base/path.h"
#include "base/text.h"
#include "platform/files.h"

namespace quirepress {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kBytesLookedAt = 4096;

// Kinds of content, as bits.
constexpr unsigned kZip = 1, kOle = 2, kRtf = 4, kText = 8, kOldOffice = 16, kPdf = 32;

struct KindOfName {
    std::string_view endings;  // each between blanks
    unsigned kinds;
};

// A document with a password is an OLE container under every name.
constexpr KindOfName kKinds[] = {
    {" .docx .docm .dotx .xlsx .xlsm .xlsb .xltx .pptx .pptm .ppsx .vsdx ", kZip | kOle},
    {" .odt .ott .ods .ots .odp .otp .odg .otg .sxw .sxc .sxi ", kZip},
    {" .doc .dot .wps .xls .xlt ", kOle | kRtf | kText | kZip | kOldOffice},
    {" .ppt .pps .vsd .pub ", kOle | kZip | kOldOffice},
    {" .rtf ", kRtf},
    {" .fodt .fods .fodp .fodg .htm .html .xhtml .xml .svg .csv .txt .text .log .md .ini .cfg .conf .json "
     ".yaml "
     ".yml .eml .mht ",
     kText},
    {" .pdf ", kPdf},
};

bool IsText(std::string_view start) {
    if (StartsWith(start, "\xFF\xFE") || StartsWith(start, "\xFE\xFF")) return true;
    return start.find('\0') == std::string_view::npos;
}

bool IsOldOffice(std::string_view start) {
    constexpr std::string_view kMarks[] = {"\xDB\xA5"sv, "\x31\xBE"sv, "\x09\x00"sv,
                                           "\x09\x02"sv, "\x09\x04"sv, "\x09\x08"sv};
    return std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&](std::string_view mark) { return StartsWith(start, mark); });
}

unsigned KindsOf(std::string_view start) {
    unsigned kinds = 0;
    if (StartsWith(start, "PK\x03\x04")) kinds |= kZip;
    if (StartsWith(start, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv)) kinds |= kOle;
    if (StartsWith(start, "{\\rtf")) kinds |= kRtf;
    if (Contains(start.substr(0, 1024), "%PDF-")) kinds |= kPdf;
    if (IsOldOffice(start)) kinds |= kOldOffice;
    if (IsText(start)) kinds |= kText;
    return kinds;
}

// Fewer at the end of the file; empty when it can't be read.
std::string ReadBytes(InputFile& file, std::int64_t offset) {
    std::string bytes(kBytesLookedAt, '\0');
    const std::int64_t size = file.ReadAt(offset, bytes.data(), bytes.size());
    bytes.resize(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));
    return bytes;
}

}  // namespace

bool HasSignatureOfItsName(Files& files, std::string_view path) {
    const std::string ending = " " + ToLowerAscii(FileExtension(path)) + " ";
    const auto* const kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const KindOfName& each) {
        return Contains(each.endings, ending);
    });
    if (kind == std::end(kKinds)) return true;
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    return file && (KindsOf(ReadBytes(*file, 0)) & kind->kinds) != 0;
}

PdfState InspectPdf(Files& files, std::string_view path) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    if (!file) return PdfState::kMissing;
    const std::int64_t size = file->Size();
    if (size <= 0) return PdfState::kEmpty;
    if (!StartsWith(ReadBytes(*file, 0), "%PDF")) return PdfState::kNoPdf;
    const std::int64_t tail = std::max<std::int64_t>(0, size - static_cast<std::int64_t>(kBytesLookedAt));
    return Contains(ReadBytes(*file, tail), "%%EOF") ? PdfState::kWhole : PdfState::kCutOff;
}

}  // namespace quirepress
