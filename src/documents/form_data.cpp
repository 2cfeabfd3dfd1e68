#include "documents/form_data.h"

#include <memory>

#include "base/path.h"
#include "base/text.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::int64_t kMostBytes = std::int64_t{128} << 20;
constexpr std::string_view kFdfStart = "%FDF";

bool BeginsAsFdf(InputFile& file) {
    char start[kFdfStart.size()];
    const std::int64_t size = file.ReadAt(0, start, sizeof start);
    return size == static_cast<std::int64_t>(sizeof start) &&
           std::string_view(start, sizeof start) == kFdfStart;
}

}  // namespace

bool IsFormData(Files& files, std::string_view path) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    if (ending == ".xfdf" || ending == ".xdp") return true;
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    return file && BeginsAsFdf(*file);
}

bool ReadFormData(Files& files, std::string_view path, FormData& data, std::string& flaw) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    if (!file) {
        flaw = std::string("the forms data can't be read: ") + DescribeFileResult(result);
        return false;
    }
    if (file->Size() > kMostBytes) {
        flaw = "the forms data are larger than 128 MB";
        return false;
    }
    return BeginsAsFdf(*file) ? ReadFdfFormData(*file, data, flaw) : ReadXmlFormData(*file, data, flaw);
}

}  // namespace quirepress
