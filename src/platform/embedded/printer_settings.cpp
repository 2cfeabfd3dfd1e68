#include "platform/embedded/printer_settings.h"

#include "base/keyword_lines.h"
#include "base/numbers.h"

namespace quirepress {

namespace {

constexpr std::string_view kPaused = "PAUSED";

bool IsPausedLine(std::string_view line) {
    KeywordTokens tokens(line);
    std::string_view key;
    return tokens.TakeToken(key) && key == kPaused;
}

void ReadLine(std::string_view line, PrinterSettings& settings) {
    KeywordTokens tokens(line);
    std::string_view key;
    std::string_view value;
    if (!tokens.TakeToken(key)) return;
    if (key == kPaused) settings.paused = true;
    if (!tokens.TakeToken(value)) return;
    if (key == "PORT") settings.portText = value;
    if (key == "DRIVER") settings.driver = value;
    if (key == "STATUS") settings.statusBits = static_cast<std::uint32_t>(ParseLong(value));
    std::string_view name;
    if (key == "BIN" && tokens.TakeToken(name))
        settings.bins.push_back({ParseLong(value), std::string(name)});
}

}  // namespace

PrinterSettings ReadPrinterSettings(std::string_view text) {
    PrinterSettings settings;
    KeywordLines lines(text);
    std::string_view line;
    while (lines.TakeLine(line)) ReadLine(line, settings);
    ParsePrinterPort(settings.portText, settings.port, settings.portError);
    return settings;
}

std::string WritePrinterSettings(std::string_view port) {
    return "PORT;" + std::string(port) + "\n";
}

std::string WithPausedFlag(std::string_view text, bool paused) {
    // In front, where no over-long line can hide it.
    std::string result = paused ? std::string(kPaused) + "\n" : std::string();
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t size = end == std::string_view::npos ? text.size() : end + 1;
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (!IsPausedLine(line)) result += text.substr(0, size);
        text.remove_prefix(size);
    }
    return result;
}

}  // namespace quirepress
