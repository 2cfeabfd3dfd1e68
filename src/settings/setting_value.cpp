#include "settings/setting_value.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>

#include "base/numbers.h"
#include "base/text.h"
#include "settings/keyword_row.h"

namespace quirepress {

namespace {

using TextList = std::vector<std::string>;

// What a user writes for "on" and "off"; nothing when it is neither.
std::optional<bool> ParseSwitch(std::string_view text) {
    constexpr std::array<std::string_view, 4> kOn = {"on", "yes", "true", "1"};
    constexpr std::array<std::string_view, 4> kOff = {"off", "no", "false", "0"};
    if (std::find(kOn.begin(), kOn.end(), text) != kOn.end()) return true;
    if (std::find(kOff.begin(), kOff.end(), text) != kOff.end()) return false;
    return std::nullopt;
}

bool ParseNumbers(const KeywordRow& row, const TextList& typed, std::vector<std::int32_t>& numbers,
                  std::string& message) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::string& text : typed) {
        const auto number = ParseWholeNumber(text, Limits::min(), Limits::max());
        if (!number) {
            message =
                std::string(row.key) + " takes whole numbers of 32 bits, which \"" + text + "\" is not.";
            return false;
        }
        numbers.push_back(static_cast<std::int32_t>(*number));
    }
    return true;
}

std::string DescribeArguments(const KeywordRow& row) {
    if (IsFlag(row.form)) return " is a flag: it takes no value, or on or off.";
    if (row.form == KeywordForm::kTexts) return " takes one value or more.";
    if (row.offsets.size() == 1) return " takes one value.";
    return " takes " + std::to_string(row.offsets.size()) + " values, in their order.";
}

bool TakesAsMany(const KeywordRow& row, std::size_t count) {
    if (IsFlag(row.form)) return count <= 1;
    return row.form == KeywordForm::kTexts ? count > 0 : count == row.offsets.size();
}

const char* NameOfForm(KeywordForm form) {
    switch (form) {
        case KeywordForm::kFlag:
            return "flag";
        case KeywordForm::kNegativeFlag:
            return "negative flag";
        case KeywordForm::kNumber:
            return "number";
        case KeywordForm::kText:
            return "text";
        case KeywordForm::kNumbers:
            return "numbers";
        case KeywordForm::kTexts:
            break;
    }
    return "texts, one a line";
}

std::string DescribeWriting(const KeywordRow& row) {
    if (!row.writtenWhen.empty()) return row.writtenWhen;
    if (row.form == KeywordForm::kNegativeFlag) return "the option is off";
    return row.form == KeywordForm::kFlag ? "on" : "always";
}

// A negative flag's default is told of its option, as its meaning is.
std::string DescribeDefault(const KeywordRow& row, const void* defaults) {
    if (IsFlag(row.form)) return FieldOf<bool>(row, defaults) ? "on" : "off";
    return DescribeSettingValue(ReadSettingValue(row, defaults));
}

}  // namespace

SettingValue ReadSettingValue(const KeywordRow& row, const void* object) {
    switch (row.form) {
        case KeywordForm::kFlag:
        case KeywordForm::kNegativeFlag:
            return FieldOf<bool>(row, object) == (row.form == KeywordForm::kFlag);
        case KeywordForm::kNumber:
            return FieldOf<std::int32_t>(row, object);
        case KeywordForm::kText:
            return FieldOf<std::string>(row, object);
        case KeywordForm::kTexts:
            return FieldOf<TextList>(row, object);
        case KeywordForm::kNumbers:
            break;
    }
    std::vector<std::int32_t> numbers;
    for (std::size_t i = 0; i < row.offsets.size(); ++i)
        numbers.push_back(FieldOf<std::int32_t>(row, object, i));
    return numbers;
}

void WriteSettingValue(const KeywordRow& row, const SettingValue& value, void* object) {
    switch (row.form) {
        case KeywordForm::kFlag:
        case KeywordForm::kNegativeFlag:
            FieldOf<bool>(row, object) = std::get<bool>(value) == (row.form == KeywordForm::kFlag);
            return;
        case KeywordForm::kNumber:
            FieldOf<std::int32_t>(row, object) = std::get<std::int32_t>(value);
            return;
        case KeywordForm::kText:
            FieldOf<std::string>(row, object) = std::get<std::string>(value);
            return;
        case KeywordForm::kTexts:
            FieldOf<TextList>(row, object) = std::get<TextList>(value);
            return;
        case KeywordForm::kNumbers:
            break;
    }
    const auto& numbers = std::get<std::vector<std::int32_t>>(value);
    for (std::size_t i = 0; i < numbers.size(); ++i) FieldOf<std::int32_t>(row, object, i) = numbers[i];
}

bool ParseSettingValue(const KeywordRow& row, const TextList& typed, SettingValue& value,
                       std::string& message) {
    const std::optional<bool> isOn = typed.empty() ? true : ParseSwitch(typed.front());
    if (!TakesAsMany(row, typed.size()) || (IsFlag(row.form) && !isOn)) {
        message = row.key + DescribeArguments(row);
        return false;
    }
    std::vector<std::int32_t> numbers;
    if (IsFlag(row.form)) {
        value = *isOn;
    } else if (row.form == KeywordForm::kText) {
        value = typed.front();
    } else if (row.form == KeywordForm::kTexts) {
        value = typed;
    } else if (!ParseNumbers(row, typed, numbers, message)) {
        return false;
    } else if (row.form == KeywordForm::kNumber) {
        value = numbers.front();
    } else {
        value = numbers;
    }
    return true;
}

std::string DescribeSettingValue(const SettingValue& value) {
    const auto quoted = [](const std::string& text) { return text.empty() ? "empty" : "\"" + text + "\""; };
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "on" : "off";
    if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return quoted(*text);
    std::string joined;
    if (const auto* numbers = std::get_if<std::vector<std::int32_t>>(&value)) {
        for (const std::int32_t number : *numbers)
            joined += (joined.empty() ? "" : ";") + std::to_string(number);
        return joined;
    }
    for (const std::string& text : std::get<TextList>(value))
        joined += (joined.empty() ? "" : ", ") + quoted(text);
    return joined.empty() ? "none" : joined;
}

std::string RenderSettingsTable(const std::vector<KeywordRow>& rows, const void* defaults) {
    std::string table = "| Key | Form | Default | Written when | Meaning |\n|---|---|---|---|---|\n";
    for (const KeywordRow& row : rows) {
        std::string meaning = row.help;
        if (!row.isRead) meaning += " (Written only: it is never read back.)";
        if (!row.isReset) meaning += " (A second load keeps the value when the key is gone.)";
        table += "| `" + std::string(row.key) + "` | " + NameOfForm(row.form) + " | " +
                 DescribeDefault(row, defaults) + " | " + DescribeWriting(row) + " | " +
                 ReplaceAll(meaning, "|", "\\|") + " |\n";
    }
    return table;
}

}  // namespace quirepress
