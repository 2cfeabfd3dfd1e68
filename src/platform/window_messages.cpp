#include "platform/window_messages.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>

#include "base/escaped_text.h"
#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::array<std::string_view, 6> kTaskNames = {"list",  "controls", "text",
                                                        "press", "return",   "close"};
constexpr std::array<std::string_view, 5> kAnswerNames = {"windows", "controls", "done", "refused", "absent"};
constexpr std::array<std::string_view, 5> kRoleNames = {"other", "button", "field", "password", "label"};

template <typename Value, std::size_t Size>
bool FindName(const std::array<std::string_view, Size>& names, std::string_view name, Value& value) {
    for (std::size_t i = 0; i < Size; ++i) {
        if (names[i] != name) continue;
        value = static_cast<Value>(i);
        return true;
    }
    return false;
}

template <typename Value, std::size_t Size>
std::string_view NameOf(const std::array<std::string_view, Size>& names, Value value) {
    return names[static_cast<std::size_t>(value)];
}

class LineWriter {
public:
    explicit LineWriter(std::string_view name) : m_line(name) {}
    LineWriter& Add(std::string_view text) {
        m_line.append("\t").append(EscapeControls(text));
        return *this;
    }
    LineWriter& Add(std::int64_t number) { return Add(std::to_string(number)); }
    LineWriter& AddFlag(bool flag) { return Add(flag ? "1" : "0"); }
    const std::string& Line() const { return m_line; }

private:
    std::string m_line;
};

// Takes fields one after the other; a field that is not there or not of its form makes it bad for good.
class FieldReader {
public:
    FieldReader(const std::vector<std::string_view>& fields, std::size_t next)
        : m_fields(fields), m_next(next) {}

    std::string Text() {
        if (!IsMore()) {
            m_isGood = false;
            return {};
        }
        return UnescapeControls(m_fields[m_next++]);
    }
    std::int64_t Number(std::int64_t highest = std::numeric_limits<std::int64_t>::max()) {
        const std::optional<std::int64_t> number = ParseWholeNumber(Text(), 0, highest);
        m_isGood = m_isGood && number.has_value();
        return number.value_or(0);
    }
    bool Flag() { return Number(1) == 1; }
    ControlRole Role() {
        ControlRole role = ControlRole::kOther;
        m_isGood = FindName(kRoleNames, Text(), role) && m_isGood;
        return role;
    }
    bool IsMore() const { return m_next < m_fields.size(); }
    bool IsGood() const { return m_isGood; }

private:
    const std::vector<std::string_view>& m_fields;
    std::size_t m_next;
    bool m_isGood = true;
};

AppWindow ReadWindow(FieldReader& fields) {
    AppWindow window;
    window.id = fields.Text();
    window.processId = fields.Number();
    window.isDialog = fields.Flag();
    window.program = fields.Text();
    window.title = fields.Text();
    return window;
}

AppControl ReadControl(FieldReader& fields) {
    AppControl control;
    control.id = fields.Text();
    control.role = fields.Role();
    control.number = static_cast<int>(fields.Number(std::numeric_limits<int>::max()));
    control.name = fields.Text();
    control.isDefault = fields.Flag();
    return control;
}

}  // namespace

std::string FormatWindowRequest(const WindowRequest& request) {
    return LineWriter(NameOf(kTaskNames, request.task))
        .Add(request.window)
        .Add(request.control)
        .Add(request.text)
        .Line();
}

bool ParseWindowRequest(std::string_view line, WindowRequest& request) {
    const std::vector<std::string_view> fields = SplitAt(line, '\t');
    FieldReader reader(fields, 1);
    request.window = reader.Text();
    request.control = reader.Text();
    request.text = reader.Text();
    return FindName(kTaskNames, fields[0], request.task) && reader.IsGood() && !reader.IsMore();
}

std::string FormatWindowAnswer(const WindowAnswer& answer) {
    LineWriter line(NameOf(kAnswerNames, answer.kind));
    for (const AppWindow& window : answer.windows)
        line.Add(window.id)
            .Add(window.processId)
            .AddFlag(window.isDialog)
            .Add(window.program)
            .Add(window.title);
    for (const AppControl& control : answer.controls)
        line.Add(control.id)
            .Add(NameOf(kRoleNames, control.role))
            .Add(control.number)
            .Add(control.name)
            .AddFlag(control.isDefault);
    return line.Line();
}

bool ParseWindowAnswer(std::string_view line, WindowAnswer& answer) {
    const std::vector<std::string_view> fields = SplitAt(line, '\t');
    if (!FindName(kAnswerNames, fields[0], answer.kind)) return false;
    FieldReader reader(fields, 1);
    answer.windows.clear();
    answer.controls.clear();
    while (reader.IsGood() && reader.IsMore() && answer.kind == WindowAnswer::Kind::kWindows)
        answer.windows.push_back(ReadWindow(reader));
    while (reader.IsGood() && reader.IsMore() && answer.kind == WindowAnswer::Kind::kControls)
        answer.controls.push_back(ReadControl(reader));
    return reader.IsGood() && !reader.IsMore();
}

}  // namespace quirepress
