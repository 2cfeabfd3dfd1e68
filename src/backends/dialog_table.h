#pragma once

#include <array>
#include <string_view>
#include <vector>

namespace quirepress {

struct AppWindow;
struct PrintToFileSettings;

// By what the title of a window is known.
enum class DialogTitle {
    kIs,
    kBegins,
    kPrintCaption,  // one of PrintCaptions()
    kPrintFile,     // WINDOWNAME of printfile.ini, printpdf.ini, printxps.ini
    kPrintPdf,
    kPrintXps
};

enum class DialogAnswer {
    kPress,   // a button: the first of `buttons` that it has, else the one that Return presses
    kReturn,  // the key
    kClose,
    kSave,     // its field gets the name of the output file, then as kPress
    kReplace,  // after kSave, whether the file may be overwritten: the first button for yes, the second for
               // no
    kNone      // it is known and left alone
};

enum class DialogCondition {
    kAlways,
    kPasswordSeconds,  // it has been open for CLOSEOFFICEPASSWORDBOX seconds
    kHpClickOk
};

// What is answered, and how. The first rule that fits a window counts.
struct DialogRule {
    int number;  // in the trace of its answer
    DialogTitle match;
    std::string_view title;  // for kIs and kBegins
    std::string_view
        owner;  // part of the title of a window of the same program, in any case; empty: any program
    DialogAnswer answer;
    std::array<std::string_view, 2> buttons = {};
    DialogCondition condition = DialogCondition::kAlways;
};

const std::vector<DialogRule>& DialogRuleTable();

// The captions of print dialogs, in the order in which they are tested. UTF-8.
const std::vector<std::string_view>& PrintCaptions();
bool IsPrintCaption(std::string_view title);
// Of a window in which a program shows how far its print-out is.
bool IsPrintProgress(std::string_view title);

// Null when it is none of the known ones. `all` are the windows that are open.
const DialogRule* FindDialogRule(const AppWindow& window, const std::vector<AppWindow>& all,
                                 const PrintToFileSettings& settings);

}  // namespace quirepress
