#include "settings/keyword_file.h"

#include <cstdint>
#include <utility>

#include "base/code_page.h"
#include "base/keyword_lines.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

using TextList = std::vector<std::string>;

constexpr std::int64_t kLargestSettingsFile = std::int64_t{16} << 20;
constexpr const char* kSaveErrorTitle = "Save Error!";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

struct Line {
    const KeywordRow* row;
    std::string text;
};

void TakeValues(const KeywordRow& row, KeywordTokens& tokens, const CodePage* page, void* object) {
    std::string_view token;
    if (row.form == KeywordForm::kNumber || row.form == KeywordForm::kNumbers) {
        std::size_t taken = 0;
        while (taken < row.offsets.size() && tokens.TakeToken(token))
            FieldOf<std::int32_t>(row, object, taken++) = ParseLong(token);
        if (taken == 0 && row.whenMissing) row.whenMissing(object);
        return;
    }
    if (!tokens.TakeToken(token)) {
        if (row.whenMissing) row.whenMissing(object);
        return;
    }
    std::string text = page != nullptr ? DecodeText(token, *page) : std::string(token);
    if (row.form == KeywordForm::kTexts)
        FieldOf<TextList>(row, object).push_back(std::move(text));
    else
        FieldOf<std::string>(row, object) = std::move(text);
}

// The texts of the row's lines, without line ends; a text that is no UTF-8 is taken for one in the code page.
TextList LinesOf(const KeywordRow& row, const CodePage& page, const void* object, bool& hasPageText) {
    const auto textLine = [&](const std::string& text) {
        const bool isPageText = !IsValidUtf8(text);
        hasPageText = hasPageText || isPageText;
        return std::string(row.key) + ";" + (isPageText ? DecodeText(text, page) : text);
    };
    if (IsFlag(row.form)) return {row.key};
    if (row.form == KeywordForm::kText) return {textLine(FieldOf<std::string>(row, object))};
    TextList lines;
    if (row.form == KeywordForm::kTexts) {
        for (const std::string& text : FieldOf<TextList>(row, object)) lines.push_back(textLine(text));
        return lines;
    }
    lines.emplace_back(row.key);
    for (std::size_t i = 0; i < row.offsets.size(); ++i)
        lines.front() += ";" + std::to_string(FieldOf<std::int32_t>(row, object, i));
    return lines;
}

bool HasSpecialByte(const KeywordRow& row, const void* object) {
    const auto isSpecial = [](const std::string& text) {
        return text.find_first_of(std::string_view(";\r\n\0", 4)) != std::string::npos;
    };
    if (row.form == KeywordForm::kText) return isSpecial(FieldOf<std::string>(row, object));
    if (row.form != KeywordForm::kTexts) return false;
    for (const std::string& text : FieldOf<TextList>(row, object))
        if (isSpecial(text)) return true;
    return false;
}

// Every line in the code page; false when one does not fit, or when all together would be read as UTF-8.
bool EncodeLines(std::vector<Line>& lines, const CodePage& page) {
    std::vector<Line> encoded = lines;
    std::string all;
    for (Line& line : encoded) {
        if (!EncodeText(line.text, page, line.text)) return false;
        all += line.text + "\n";
    }
    if (IsValidUtf8(all)) return false;
    lines = std::move(encoded);
    return true;
}

}  // namespace

void ReadKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const CodePage& page,
                  std::string_view text, void* object, KeywordReading& reading) {
    const CodePage* const textPage = IsValidUtf8(text) ? nullptr : &page;
    if (StartsWith(text, kUtf8Mark)) text.remove_prefix(kUtf8Mark.size());
    KeywordLines lines(text, file.lineLimit);
    for (std::string_view line; lines.TakeLine(line);) {
        reading.hasLines = true;
        // What a value could not hold when it is written again ends the line.
        KeywordTokens tokens(line.substr(0, line.find_first_of(std::string_view("\r\0", 2))));
        std::string_view key;
        if (!tokens.TakeToken(key)) continue;
        for (const KeywordRow& row : rows) {
            if (key != row.key || !row.isRead) continue;
            if (row.needsModernSystem && !reading.isModernSystem) continue;
            if (IsFlag(row.form))
                FieldOf<bool>(row, object) = row.form == KeywordForm::kFlag;
            else
                TakeValues(row, tokens, textPage, object);
        }
    }
}

bool WriteKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const CodePage& page,
                   std::string_view old, const void* object, std::string& bytes, std::string& flaw) {
    std::vector<Line> lines;
    bool isInPage = !IsValidUtf8(old);
    for (const KeywordRow& row : rows) {
        if (!IsKeywordWritten(row, object)) continue;
        if (HasSpecialByte(row, object)) {
            flaw = std::string("The value of ") + row.key + " holds a \";\", a line end or a NUL.";
            return false;
        }
        for (std::string& text : LinesOf(row, page, object, isInPage))
            lines.push_back({&row, std::move(text)});
    }
    if (isInPage) EncodeLines(lines, page);
    std::string all;
    for (const Line& line : lines) {
        if (line.text.size() > file.lineLimit) {
            flaw = std::string("The value of ") + line.row->key + " makes its line longer than " +
                   std::to_string(file.lineLimit) + " bytes.";
            return false;
        }
        all += line.text;
        all += PlatformLineEnd();
    }
    bytes = std::move(all);
    return true;
}

bool IsKeywordWritten(const KeywordRow& row, const void* object) {
    if (row.isWritten) return row.isWritten(object);
    if (!IsFlag(row.form)) return true;
    return FieldOf<bool>(row, object) == (row.form == KeywordForm::kFlag);
}

void CopyField(const KeywordRow& row, const void* from, void* to) {
    switch (row.form) {
        case KeywordForm::kFlag:
        case KeywordForm::kNegativeFlag:
            FieldOf<bool>(row, to) = FieldOf<bool>(row, from);
            return;
        case KeywordForm::kText:
            FieldOf<std::string>(row, to) = FieldOf<std::string>(row, from);
            return;
        case KeywordForm::kTexts:
            FieldOf<TextList>(row, to) = FieldOf<TextList>(row, from);
            return;
        case KeywordForm::kNumber:
        case KeywordForm::kNumbers:
            for (std::size_t i = 0; i < row.offsets.size(); ++i)
                FieldOf<std::int32_t>(row, to, i) = FieldOf<std::int32_t>(row, from, i);
            return;
    }
}

int LoadKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const SettingsPlace& place,
                 const void* defaults, void* object, KeywordReading& reading) {
    for (const KeywordRow& row : rows)
        if (row.isReset) CopyField(row, defaults, object);
    std::string text;
    FileResult result = FileResult::kFailed;
    if (!ReadWholeFile(place.files, place.workingFolder + file.name, kLargestSettingsFile, text, result))
        return kSettingsNotRead;
    ReadKeywords(rows, file, place.codePage, text, object, reading);
    return kSettingsDone;
}

std::string ReadSettingsText(const SettingsFile& file, const SettingsPlace& place) {
    std::string text;
    FileResult result = FileResult::kFailed;
    ReadWholeFile(place.files, place.workingFolder + file.name, kLargestSettingsFile, text, result);
    return text;
}

int SaveKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const SettingsPlace& place,
                 const void* object) {
    const std::string path = place.workingFolder + file.name;
    std::string bytes;
    std::string flaw;
    if (!WriteKeywords(rows, file, place.codePage, ReadSettingsText(file, place), object, bytes, flaw)) {
        place.prompts.ShowBox(kSaveErrorTitle, std::string(file.failureMessage) + " " + flaw);
        return kSettingsNotWritten;
    }
    if (ReplaceFileDurably(place.files, path, bytes, file.access) == FileResult::kDone) return kSettingsDone;
    place.prompts.ShowBox(kSaveErrorTitle, file.failureMessage);
    return kSettingsNotWritten;
}

}  // namespace quirepress
