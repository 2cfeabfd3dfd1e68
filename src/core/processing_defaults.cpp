#include "core/processing_defaults.h"

#include <algorithm>

#include "base/path.h"
#include "base/text.h"
#include "core/page_range.h"
#include "platform/file_tools.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::size_t kMostBytes = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class ProcessingWay : public RunWay {
public:
    explicit ProcessingWay(ProcessingDefaults& defaults) : m_defaults(defaults) {}

    bool Takes(const RunItem& item) override {
        return item.kind == ItemKind::kCommand && ProcessingDefaults::TakesItem(item.path);
    }

    WayResult Process(const RunItem& item, WayFeedback&) override {
        WayResult result;
        std::string message;
        if (m_defaults.ApplyItem(item.path, message)) {
            result.end = WayResult::End::kPrinted;
            result.status = "Set Default Processing Settings";
        } else {
            result.status = "Error Default Processing Settings Not Set";
            result.remark = result.status + ": " + message;
        }
        return result;
    }

private:
    ProcessingDefaults& m_defaults;
};

}  // namespace

bool ProcessingDefaults::TakesItem(std::string_view path) {
    return EqualIgnoringAsciiCase(FileExtension(path), ".pro");
}

bool ProcessingDefaults::ApplyItem(std::string_view path, std::string& message) {
    m_parameters = kUnusable;
    std::string text;
    FileResult result = FileResult::kDone;
    if (!ReadWholeFile(m_files, path, kMostBytes, text, result)) {
        message = "the file can't be read: " + std::string(DescribeFileResult(result));
        return false;
    }
    std::string_view line = text;
    if (StartsWith(line, kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
    line = TrimTrailingBlanks(line.substr(0, line.find_first_of("\r\n")));
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    if (std::any_of(line.begin(), line.end(), isControl)) {
        message = "its first line is no text";
        return false;
    }
    if (!line.empty() && !HasSwitches(line)) {
        message = "its first line holds no switches, such as -s2|-e5";
        return false;
    }
    m_parameters = line;
    return true;
}

std::unique_ptr<RunWay> MakeProcessingWay(ProcessingDefaults& defaults) {
    return std::make_unique<ProcessingWay>(defaults);
}

}  // namespace quirepress
