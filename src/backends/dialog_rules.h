#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/app_windows.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
struct DialogRule;
struct GeneralOptions;
struct PrintToFileOptions;
struct PrintToFileSettings;

struct DialogServices {
    AppWindows& windows;
    Files& files;
    EventLoop& loop;
    DebugLog& debugLog;
    const GeneralOptions& options;
    const PrintToFileSettings& settings;
};

// What one look at the windows of other programs came to.
struct DialogPass {
    int answered = 0;
    std::vector<AppWindow> waiting;  // dialogs that no rule answers, or none any more
};

// Answers the dialogs of printing programs by the rules of dialog_table.h. Everything may pump; a call from
// within the pump of another one does nothing.
class DialogRules {
public:
    explicit DialogRules(DialogServices services) : m_services(services) {}

    // What is being printed, for the name of its output file; empty: save dialogs are left alone. Clears the
    // flaw.
    void SetDocument(std::string_view path);
    // Why an answer was to give up on the document, as a part of a sentence; else empty.
    const std::string& Flaw() const { return m_flaw; }

    // One look each; they tell how many windows were answered.
    int GetPrintWindows();  // print dialogs
    int CheckForWindow();   // the other known ones
    // Both, in one look.
    DialogPass CheckWindows();

    DialogServices& Services() { return m_services; }

private:
    enum class Kinds { kPrintDialogs, kOthers, kAll };
    // What is remembered of a window while it is open.
    struct Sight {
        long long first = 0;   // when it was seen first
        long long answer = 0;  // when it was answered last
        int answers = 0;
    };
    using Sights = std::map<std::pair<std::int64_t, std::string>, Sight>;
    using Controls = std::vector<AppControl>;

    DialogPass Look(Kinds kinds);
    void Remember(const std::vector<AppWindow>& windows);
    Sight& SightOf(const AppWindow& window) { return m_sights[{window.processId, window.id}]; }
    bool IsDue(const DialogRule& rule, const AppWindow& window);
    bool IsLeftWaiting(const DialogRule* rule, const AppWindow& window);
    bool Answer(const DialogRule& rule, const AppWindow& window);
    bool PressButton(const AppWindow& window, const Controls& controls,
                     const std::vector<std::string_view>& captions);
    bool CloseDialog(const AppWindow& window, const Controls& controls);
    bool AnswerSaveDialog(const DialogRule& rule, const AppWindow& window, const Controls& controls);
    bool AnswerReplaceQuestion(const DialogRule& rule, const AppWindow& window, const Controls& controls);
    const AppControl* FindNameField(const Controls& controls);
    const PrintToFileOptions& OptionsOf(const DialogRule& rule) const;

    DialogServices m_services;
    std::string m_document;
    std::string m_flaw;
    Sights m_sights;
    // The last save dialog that got its answer.
    std::int64_t m_savingProcess = 0;
    bool m_mayReplace = false;
    bool m_isLooking = false;
};

}  // namespace quirepress
