#include "documents/pdf_form_appearance.h"

#include <algorithm>
#include <cstdlib>
#include <qpdf/QPDFObjectHandle.hh>
#include <utility>

#include "base/format.h"
#include "base/text.h"
#include "documents/pdf_form_fonts.h"

namespace quirepress {

namespace {

using Handle = QPDFObjectHandle;

constexpr double kLeastSize = 4;
constexpr double kLargestSize = 1000;
constexpr double kUsualSize = 12;
constexpr double kShrinking = 0.95;
constexpr double kLeading = 1.15;
constexpr double kRoomForLine = 1.3;  // height of a field of one line, by its size
constexpr double kMiddle = 0.26;      // of letters above their base line
constexpr double kAscent = 0.9;
constexpr double kDescent = 0.21;
constexpr double kLetterHeight = 0.94;  // from the foot of a "g" to the top of an "A"

struct Box {
    double width = 0;
    double height = 0;
    int rotation = 0;
    double border = 0;
    double Padding() const { return 2 * std::max(1.0, border); }
};

Box BoxOf(Handle widget) {
    Box box;
    if (!widget.getKey("/Rect").isRectangle()) return box;
    const Handle::Rectangle rect = widget.getKey("/Rect").getArrayAsRectangle();
    box.width = rect.urx - rect.llx;
    box.height = rect.ury - rect.lly;
    Handle look = widget.getKey("/MK");
    if (!look.isDictionary()) return box;
    if (look.getKey("/R").isInteger()) box.rotation = look.getKey("/R").getIntValueAsInt() % 360;
    if (box.rotation % 180 != 0) std::swap(box.width, box.height);
    Handle style = widget.getKey("/BS");
    Handle width = style.isDictionary() ? style.getKey("/W") : Handle::newNull();
    if (look.getKey("/BC").isArray() && look.getKey("/BC").getArrayNItems() > 0)
        box.border = width.isNumber() ? width.getNumericValue() : 1;
    return box;
}

// "0.5 g" for [0.5]; operators for 1, 3 and 4 numbers. Empty for no colour.
std::string ColorOperator(Handle color, const char* grey, const char* rgb, const char* cmyk) {
    if (!color.isArray()) return "";
    const int count = color.getArrayNItems();
    const char* const name = count == 1 ? grey : count == 3 ? rgb : count == 4 ? cmyk : nullptr;
    if (name == nullptr) return "";
    std::string text;
    for (int i = 0; i < count; ++i)
        if (color.getArrayItem(i).isNumber())
            text += Format("%.3f ", color.getArrayItem(i).getNumericValue());
    return text + name + "\n";
}

std::string DrawFrame(Handle widget, const Box& box) {
    Handle look = widget.getKey("/MK");
    if (!look.isDictionary()) return "";
    std::string content;
    const std::string background = ColorOperator(look.getKey("/BG"), "g", "rg", "k");
    if (!background.empty()) content += background + Format("0 0 %.3f %.3f re f\n", box.width, box.height);
    const std::string line = ColorOperator(look.getKey("/BC"), "G", "RG", "K");
    if (!line.empty() && box.border > 0)
        content += line + Format("%.3f w %.3f %.3f %.3f %.3f re S\n", box.border, box.border / 2,
                                 box.border / 2, box.width - box.border, box.height - box.border);
    return content;
}

// The parts of "/Helv 12 Tf 0 0 1 rg" that are understood; nothing else comes into a page.
struct Style {
    std::string fontName;
    double size = 0;  // 0: as it fits
    std::string color = "0 g";
};

Style ReadStyle(std::string_view appearance) {
    Style style;
    std::vector<std::string> operands;
    const std::string plain = ReplaceAll(ReplaceAll(ReplaceAll(appearance, "\n", " "), "\r", " "), "\t", " ");
    for (const std::string_view word : SplitAt(plain, ' ')) {
        const bool isNumber = !word.empty() && word.find_first_not_of("+-.0123456789") == std::string::npos;
        if (isNumber || StartsWith(word, "/")) {
            operands.emplace_back(word);
            continue;
        }
        const std::size_t count = operands.size();
        if (word == "Tf" && count >= 2) {
            style.fontName = operands[count - 2];
            style.size = std::strtod(operands[count - 1].c_str(), nullptr);
        }
        const std::size_t wanted = word == "g" ? 1 : word == "rg" ? 3 : word == "k" ? 4 : 0;
        if (wanted > 0 && count == wanted) {
            style.color.clear();
            for (const std::string& operand : operands) style.color += operand + ' ';
            style.color += word;
        }
        if (!word.empty()) operands.clear();
    }
    return style;
}

// Breaks a text into lines that are no wider than `room`, between words where it can.
std::vector<std::string> WrapLines(const FormFont& font, double size, double room, const std::string& bytes) {
    std::vector<std::string> lines;
    for (const std::string_view paragraph : SplitAt(bytes, '\n')) {
        std::string line;
        std::size_t lastBlank = std::string::npos;
        for (const char c : paragraph) {
            line += c;
            if (c == ' ') lastBlank = line.size();
            if (line.size() < 2 || c == ' ' || WidthOf(font, line) * size <= room) continue;
            const std::size_t end = lastBlank != std::string::npos ? lastBlank : line.size() - 1;
            lines.push_back(line.substr(0, end));
            line.erase(0, end);
            lastBlank = std::string::npos;
        }
        lines.push_back(line);
    }
    return lines;
}

class TextDrawing {
public:
    TextDrawing(const Box& box, const FormFont& font, const Style& style, const FormText& text,
                std::string bytes, int alignment)
        : m_box(box),
          m_font(font),
          m_style(style),
          m_text(text),
          m_bytes(std::move(bytes)),
          m_alignment(alignment) {}

    // False when not all of it can be seen.
    bool Draw(std::string& content) {
        const bool isFitting = Fit();
        content += Format("/Tx BMC\nq\n%.3f %.3f %.3f %.3f re W n\n", m_box.border, m_box.border,
                          std::max(0.0, m_box.width - 2 * m_box.border),
                          std::max(0.0, m_box.height - 2 * m_box.border));
        content += m_text.chosenLines.empty() ? "" : MarkLines();
        content += Format("BT\n%s\n/F0 %.3f Tf\n", m_style.color, m_size);
        content += m_text.cells > 0 ? DrawCells() : DrawLines();
        content += "ET\nQ\nEMC\n";
        return isFitting;
    }

private:
    bool HasManyLines() const { return m_text.isMultiline || !m_text.chosenLines.empty(); }
    double Room() const { return std::max(1.0, m_box.width - 2 * m_box.Padding()); }

    // As far as nothing is cut off, that is seen less close to the edge.
    double SeenWidth() const { return m_box.width - m_box.Padding() - m_box.border; }

    // The size that it has, or the largest one at which everything can be seen. False when there is none.
    bool Fit() {
        const double own = std::min(m_style.size, kLargestSize);
        const double usual = HasManyLines() ? kUsualSize : (m_box.height - 2 * m_box.border) / kRoomForLine;
        const double least = own > 0 ? std::min(own, kLeastSize) : kLeastSize;
        m_size = std::max(own > 0 ? own : usual, least);
        for (;; m_size = std::max(m_size * kShrinking, least)) {
            BreakLines();
            if (IsFitting(Room())) return true;
            if (m_size <= least) return IsFitting(SeenWidth());
        }
    }

    void BreakLines() {
        m_lines = {m_bytes};
        if (m_text.isMultiline) m_lines = WrapLines(m_font, m_size, Room(), m_bytes);
        if (!m_text.chosenLines.empty()) {
            m_lines.clear();
            for (const std::string_view line : SplitAt(m_bytes, '\n')) m_lines.emplace_back(line);
        }
    }

    bool IsFitting(double room) const {
        if (m_bytes.empty()) return true;
        if (m_text.cells > 0) return IsFittingCells();
        if (!m_text.chosenLines.empty()) return AreChoicesSeen(room);
        const bool isWide = std::any_of(m_lines.begin(), m_lines.end(),
                                        [&](const std::string& line) { return IsWider(line, room); });
        return !isWide && (m_text.isMultiline ? HasHeightFor(m_lines.size()) : HasHeightForOne());
    }

    bool IsWider(std::string_view line, double room) const {
        return WidthOf(m_font, TrimTrailingBlanks(line)) * m_size > room;
    }

    bool HasHeightFor(std::size_t lines) const {
        const double below = kDescent + kLeading * static_cast<double>(lines - 1);
        return m_box.Padding() + m_size * (kAscent + below) <= m_box.height - m_box.border;
    }

    bool HasHeightForOne() const { return m_size * kLetterHeight <= m_box.height - 2 * m_box.border; }

    bool IsFittingCells() const {
        const double cell = m_box.width / m_text.cells;
        const bool isWide = std::any_of(m_bytes.begin(), m_bytes.end(),
                                        [&](char c) { return IsWider(std::string_view(&c, 1), cell); });
        return m_bytes.size() <= static_cast<std::size_t>(m_text.cells) && !isWide && HasHeightForOne();
    }

    // A list shows those that were made, and as many others as it can.
    bool AreChoicesSeen(double room) const {
        const std::size_t first = FirstLine();
        for (std::size_t i = first; i < std::min(m_lines.size(), m_text.chosenLines.size()); ++i)
            if (m_text.chosenLines[i] && (IsWider(m_lines[i], room) || !HasHeightFor(i - first + 1)))
                return false;
        return true;
    }

    double TopLine() const {
        return HasManyLines() ? m_box.height - m_box.Padding() - kAscent * m_size
                              : m_box.height / 2 - kMiddle * m_size;
    }

    std::string DrawLines() const {
        std::string content;
        double y = TopLine();
        for (std::size_t i = FirstLine(); i < m_lines.size(); ++i, y -= m_size * kLeading) {
            const double rest = Room() - WidthOf(m_font, m_lines[i]) * m_size;
            content += Show(m_box.Padding() + (m_alignment == 1   ? rest / 2
                                               : m_alignment == 2 ? rest
                                                                  : 0.0),
                            y, m_lines[i]);
        }
        return content;
    }

    std::string DrawCells() const {
        std::string content;
        const double cell = m_box.width / m_text.cells;
        for (std::size_t i = 0; i < m_bytes.size(); ++i) {
            const std::string one(1, m_bytes[i]);
            const double inset = (cell - WidthOf(m_font, one) * m_size) / 2;
            content += Show(cell * static_cast<double>(i) + inset, TopLine(), one);
        }
        return content;
    }

    // The choices are to be seen that were made.
    std::size_t FirstLine() const {
        const auto chosen = std::find(m_text.chosenLines.begin(), m_text.chosenLines.end(), true);
        const auto index = static_cast<std::size_t>(chosen - m_text.chosenLines.begin());
        const bool isOutside =
            static_cast<double>(index + 1) * m_size * kLeading > m_box.height - m_box.Padding();
        return index < m_lines.size() && isOutside && !m_text.chosenLines.empty() ? index : 0;
    }

    std::string MarkLines() const {
        std::string content = "0.6 0.757 0.855 rg\n";
        double y = TopLine() - m_size * (kLeading - kAscent);
        for (std::size_t i = FirstLine(); i < m_text.chosenLines.size(); ++i, y -= m_size * kLeading)
            if (m_text.chosenLines[i])
                content +=
                    Format("%.3f %.3f %.3f %.3f re f\n", m_box.border, y, m_box.width, m_size * kLeading);
        return content;
    }

    static std::string Show(double x, double y, std::string_view bytes) {
        std::string content = Format("1 0 0 1 %.3f %.3f Tm <", x, y);
        for (const char c : bytes) content += Format("%02X", static_cast<int>(static_cast<unsigned char>(c)));
        return content + "> Tj\n";
    }

    const Box& m_box;
    const FormFont& m_font;
    const Style& m_style;
    const FormText& m_text;
    std::string m_bytes;
    int m_alignment;
    double m_size = 0;
    std::vector<std::string> m_lines;
};

Handle NewAppearance(QPDF& pdf, const Box& box, const std::string& content, const Handle& font) {
    Handle stream = Handle::newStream(&pdf, content);
    Handle dictionary = stream.getDict();
    dictionary.replaceKey("/Type", Handle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", Handle::newName("/Form"));
    dictionary.replaceKey("/BBox", Handle::parse(Format("[0 0 %.3f %.3f]", box.width, box.height)));
    if (box.rotation == 90) dictionary.replaceKey("/Matrix", Handle::parse("[0 1 -1 0 0 0]"));
    if (box.rotation == 180) dictionary.replaceKey("/Matrix", Handle::parse("[-1 0 0 -1 0 0]"));
    if (box.rotation == 270) dictionary.replaceKey("/Matrix", Handle::parse("[0 -1 1 0 0 0]"));
    Handle fonts = Handle::newDictionary({{"/F0", font}});
    dictionary.replaceKey("/Resources", Handle::newDictionary({{"/Font", fonts}}));
    return stream;
}

std::string WithPlainLineEnds(const std::string& text) {
    return ReplaceAll(ReplaceAll(text, "\r\n", "\n"), "\r", "\n");
}

}  // namespace

FormTextResult DrawFormText(QPDF& pdf, Handle widget, const FormText& text, const FormTextStyle& style) {
    const Box box = BoxOf(widget);
    const Style read = ReadStyle(style.appearance);
    std::string shown = WithPlainLineEnds(text.text);
    if (text.chosenLines.empty()) shown.erase(shown.find_last_not_of(" \n") + 1);
    if (!text.isMultiline && text.chosenLines.empty()) shown = ReplaceAll(shown, "\n", " ");
    Handle fonts = style.fonts;
    const bool isNamed = fonts.isDictionary() && !read.fontName.empty();
    FormFont font;
    std::string bytes;
    if (!ChooseFormFont(isNamed ? fonts.getKey(read.fontName) : Handle::newNull(), shown, font, bytes))
        return FormTextResult::kNoCharacters;
    std::string content = DrawFrame(widget, box);
    const bool isWhole = TextDrawing(box, font, read, text, std::move(bytes), style.alignment).Draw(content);
    const bool isSeen = box.width > 0 && box.height > 0;
    if (!isWhole && isSeen && !text.mayBeCut) return FormTextResult::kNoRoom;
    widget.replaceKey("/AP",
                      Handle::newDictionary({{"/N", NewAppearance(pdf, box, content, font.dictionary)}}));
    widget.removeKey("/AS");
    return FormTextResult::kDrawn;
}

void DrawCheckMark(QPDF& pdf, Handle widget, const std::string& state) {
    const Box box = BoxOf(widget);
    constexpr double kMarkWidth = 0.76;
    const double size = 0.8 * std::min(box.width, box.height);
    const std::string content =
        DrawFrame(widget, box) + Format("q\nBT\n0 g\n/F0 %.3f Tf\n%.3f %.3f Td\n(8) Tj\nET\nQ\n", size,
                                        (box.width - kMarkWidth * size) / 2, (box.height - 0.7 * size) / 2);
    const Handle font = Handle::parse("<< /Type /Font /Subtype /Type1 /BaseFont /ZapfDingbats >>");
    Handle states = Handle::newDictionary({{state, NewAppearance(pdf, box, content, font)}});
    widget.replaceKey("/AP", Handle::newDictionary({{"/N", states}}));
}

}  // namespace quirepress
