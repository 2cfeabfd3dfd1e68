#include "backends/dialog_rules.h"

#include <algorithm>

#include "backends/dialog_table.h"
#include "backends/output_file_name.h"
#include "base/path.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "settings/general_options.h"
#include "settings/print_to_file_options.h"

namespace quirepress {

namespace {

constexpr int kAnswerPause = 1'000;  // milliseconds, for a window to go before it is answered again
constexpr int kMostAnswers = 5;      // to one window
constexpr int kMillisecondsInSecond = 1'000;
constexpr int kNameControl = 1001;

}  // namespace

void DialogRules::SetDocument(std::string_view path) {
    m_document = path;
    m_flaw.clear();
    m_savingProcess = 0;
}

int DialogRules::GetPrintWindows() {
    return Look(Kinds::kPrintDialogs).answered;
}

int DialogRules::CheckForWindow() {
    return Look(Kinds::kOthers).answered;
}

DialogPass DialogRules::CheckWindows() {
    return Look(Kinds::kAll);
}

DialogPass DialogRules::Look(Kinds kinds) {
    DialogPass pass;
    if (m_isLooking) return pass;
    m_isLooking = true;
    if (kinds != Kinds::kOthers) m_services.debugLog.Trace("GetPrintWindows()\r\n");
    const std::vector<AppWindow> windows = m_services.windows.ListWindows();
    Remember(windows);
    for (const AppWindow& window : windows) {
        const DialogRule* const rule = FindDialogRule(window, windows, m_services.settings);
        const bool isPrintDialog = rule != nullptr && rule->match == DialogTitle::kPrintCaption;
        if (rule != nullptr && kinds != (isPrintDialog ? Kinds::kOthers : Kinds::kPrintDialogs)) {
            if (!isPrintDialog)
                m_services.debugLog.Trace("DoCheckForWindow() Window Title: %s\r\n", window.title);
            if (IsDue(*rule, window) && Answer(*rule, window)) {
                m_services.debugLog.Trace("Click%d OK\r\n", rule->number);
                ++pass.answered;
            }
        }
        if (IsLeftWaiting(rule, window)) pass.waiting.push_back(window);
    }
    m_isLooking = false;
    return pass;
}

void DialogRules::Remember(const std::vector<AppWindow>& windows) {
    Sights sights;
    const long long now = m_services.loop.MonotonicMilliseconds();
    for (const AppWindow& window : windows) {
        const auto known = m_sights.find({window.processId, window.id});
        sights[{window.processId, window.id}] = known != m_sights.end() ? known->second : Sight{now, 0, 0};
    }
    m_sights = std::move(sights);
}

bool DialogRules::IsDue(const DialogRule& rule, const AppWindow& window) {
    const Sight& sight = SightOf(window);
    const long long now = m_services.loop.MonotonicMilliseconds();
    if (rule.answer == DialogAnswer::kNone || sight.answers >= kMostAnswers) return false;
    if (sight.answers > 0 && now < sight.answer + kAnswerPause) return false;
    const int seconds = m_services.options.m_closeOfficePasswordBox;
    switch (rule.condition) {
        case DialogCondition::kPasswordSeconds:
            return seconds > 0 && now >= sight.first + seconds * 1LL * kMillisecondsInSecond;
        case DialogCondition::kHpClickOk:
            return m_services.options.m_hpClickOk;
        case DialogCondition::kAlways:
            break;
    }
    return true;
}

// A password box has its own time; what only tells how far a program is needs no answer.
bool DialogRules::IsLeftWaiting(const DialogRule* rule, const AppWindow& window) {
    if (!window.isDialog) return false;
    if (rule == nullptr) return true;
    return rule->answer != DialogAnswer::kNone && rule->condition != DialogCondition::kPasswordSeconds;
}

bool DialogRules::Answer(const DialogRule& rule, const AppWindow& window) {
    Sight& sight = SightOf(window);
    sight.answer = m_services.loop.MonotonicMilliseconds();
    const Controls controls = m_services.windows.ListControls(window);
    bool isAnswered = false;
    switch (rule.answer) {
        case DialogAnswer::kPress:
            // A print dialog's own caption mostly stands on its button, too.
            isAnswered = PressButton(window, controls,
                                     rule.match == DialogTitle::kPrintCaption
                                         ? std::vector<std::string_view>{window.title, rule.buttons[0]}
                                         : std::vector<std::string_view>{rule.buttons[0]});
            break;
        case DialogAnswer::kReturn:
            isAnswered = m_services.windows.SendReturn(window);
            break;
        case DialogAnswer::kClose:
            isAnswered = CloseDialog(window, controls);
            break;
        case DialogAnswer::kSave:
            isAnswered = AnswerSaveDialog(rule, window, controls);
            break;
        case DialogAnswer::kReplace:
            isAnswered = AnswerReplaceQuestion(rule, window, controls);
            break;
        case DialogAnswer::kNone:
            break;
    }
    // What could not be answered may not be all there yet.
    if (isAnswered) ++SightOf(window).answers;
    return isAnswered;
}

bool DialogRules::PressButton(const AppWindow& window, const Controls& controls,
                              const std::vector<std::string_view>& captions) {
    const auto press = [&](const auto& isWanted) {
        const auto button = std::find_if(controls.begin(), controls.end(), [&](const AppControl& control) {
            return control.role == ControlRole::kButton && isWanted(control);
        });
        return button != controls.end() && m_services.windows.Press(window, *button);
    };
    for (const std::string_view caption : captions)
        if (press([&](const AppControl& button) { return button.name == WithoutMnemonic(caption); }))
            return true;
    return press([](const AppControl& button) { return button.isDefault; });
}

bool DialogRules::CloseDialog(const AppWindow& window, const Controls& controls) {
    for (const AppControl& control : controls)
        if (control.role == ControlRole::kButton && control.name == "Cancel")
            return m_services.windows.Press(window, control);
    return m_services.windows.Close(window);
}

bool DialogRules::AnswerSaveDialog(const DialogRule& rule, const AppWindow& window,
                                   const Controls& controls) {
    if (m_document.empty()) return false;
    const AppControl* const field = FindNameField(controls);
    if (field == nullptr) return false;
    const PrintToFileOptions& options = OptionsOf(rule);
    const OutputFileName name = MakeOutputFileName(options, m_document, [this](const std::string& path) {
        return m_services.files.Inspect(path).kind != FileKind::kMissing;
    });
    const std::string folder(FolderOf(name.path));
    if (folder.empty())
        m_flaw = "no folder is set for its output (PATH)";
    else if (name.fate == OutputFileName::Fate::kTaken)
        m_flaw = "its output file is there already: " + name.path;
    else if (m_services.files.MakeFolders(folder) != FileResult::kDone)
        m_flaw = "the folder for its output can't be made: " + folder;
    if (!m_flaw.empty()) return CloseDialog(window, controls);
    m_services.debugLog.Trace("SendMessage WM_SETTEXT: %s\r\n", name.path);
    if (!m_services.windows.SetText(window, *field, name.path)) return false;
    m_savingProcess = window.processId;
    m_mayReplace = name.fate == OutputFileName::Fate::kReplaces || options.m_overwrite;
    return PressButton(window, controls, {rule.buttons[0]});
}

// Of a file that has come up in the meantime the save dialog asks once more, and gets another name or none.
bool DialogRules::AnswerReplaceQuestion(const DialogRule& rule, const AppWindow& window,
                                        const Controls& controls) {
    if (m_savingProcess == 0 || m_savingProcess != window.processId) return false;
    return PressButton(window, controls, {rule.buttons[m_mayReplace ? 0 : 1]});
}

// Programs of other systems don't number their controls; then it is the first field for a text.
const AppControl* DialogRules::FindNameField(const Controls& controls) {
    const AppControl* field = nullptr;
    for (const AppControl& control : controls) {
        m_services.debugLog.Trace("Looking for control save file as: 3E9, :%.8X\n", control.number);
        if (control.role != ControlRole::kTextField) continue;
        if (control.number == kNameControl) return &control;
        if (field == nullptr) field = &control;
    }
    return field;
}

const PrintToFileOptions& DialogRules::OptionsOf(const DialogRule& rule) const {
    const PrintToFileSettings& settings = m_services.settings;
    if (rule.match == DialogTitle::kPrintPdf) return settings.printPdf;
    if (rule.match == DialogTitle::kPrintXps) return settings.printXps;
    return settings.printFile;
}

}  // namespace quirepress
