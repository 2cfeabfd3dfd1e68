#include "platform/linux/registry_text.h"

#include <limits>
#include <optional>

#include "base/numbers.h"
#include "base/text.h"
#include "platform/linux/percent_code.h"

namespace quirepress {

namespace {

constexpr std::string_view kNumber = "number";
constexpr std::string_view kText = "text";

// What would end a line or a field, and what an editor could lose.
bool NeedsEscape(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || c == ';' || c == '%';
}

std::string Escape(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (NeedsEscape(c)) {
            result += EncodePercent(c);
        } else {
            result += c;
        }
    }
    return result;
}

bool AddLine(std::string_view line, RegistryText& registry) {
    const std::vector<std::string_view> fields = SplitAt(line, ';');
    if (fields.size() != 4) return false;
    const auto key = DecodePercents(fields[1]);
    const auto name = DecodePercents(fields[2]);
    const auto value = DecodePercents(fields[3]);
    if (!key || !name || !value) return false;
    RegistryValue entry;
    entry.name = *name;
    if (fields[0] == kNumber) {
        const auto number = ParseWholeNumber(*value, 0, std::numeric_limits<std::uint32_t>::max());
        if (!number) return false;
        entry.isNumber = true;
        entry.number = static_cast<std::uint32_t>(*number);
    } else if (fields[0] == kText) {
        entry.text = *value;
    } else {
        return false;
    }
    registry.values[{*key, *name}] = entry;
    return true;
}

}  // namespace

RegistryText ParseRegistry(std::string_view text) {
    RegistryText registry;
    for (const std::string_view line : SplitAt(text, '\n'))
        if (!line.empty() && !AddLine(line, registry)) registry.otherLines.emplace_back(line);
    return registry;
}

std::string WriteRegistry(const RegistryText& registry) {
    std::string text;
    for (const auto& [place, value] : registry.values) {
        text += value.isNumber ? kNumber : kText;
        text += ';' + Escape(place.first) + ';' + Escape(place.second) + ';';
        text += (value.isNumber ? std::to_string(value.number) : Escape(value.text)) + '\n';
    }
    for (const std::string& line : registry.otherLines) text += line + '\n';
    return text;
}

}  // namespace quirepress
