#include "settings/monitor_value.h"

#include "base/numbers.h"
#include "settings/keyword_file.h"

namespace quirepress {

std::string ReadMonitorValue(const SettingsPlace& place, std::string_view key, int folder) {
    const std::string text = ReadSettingsText({"setup.ini", ""}, place);
    std::string value;
    KeywordLines lines(text);
    for (std::string_view line; lines.TakeLine(line);) {
        KeywordTokens tokens(line);
        std::string_view token;
        if (!tokens.TakeToken(token) || token != key) continue;
        if (!tokens.TakeToken(token) || ParseLong(token) != folder) continue;
        value = tokens.TakeToken(token) ? std::string(token) : std::string();
    }
    return value;
}

}  // namespace quirepress
