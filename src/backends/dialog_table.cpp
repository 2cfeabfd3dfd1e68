#include "backends/dialog_table.h"

#include <algorithm>

#include "base/text.h"
#include "platform/app_windows.h"
#include "settings/print_to_file_options.h"

namespace quirepress {

namespace {

using enum DialogTitle;
using enum DialogAnswer;
using enum DialogCondition;

bool HasTitleOf(const DialogRule& rule, std::string_view title, const PrintToFileSettings& settings) {
    // A WINDOWNAME that was left empty is no title.
    const auto isName = [title](const PrintToFileOptions& options) {
        return !title.empty() && title == options.m_windowName;
    };
    switch (rule.match) {
        case kIs:
            return title == rule.title;
        case kBegins:
            return StartsWith(title, rule.title);
        case kPrintCaption:
            return IsPrintCaption(title);
        case kPrintFile:
            return isName(settings.printFile);
        case kPrintPdf:
            return isName(settings.printPdf);
        case kPrintXps:
            return isName(settings.printXps);
    }
    return false;
}

bool IsOwnedBy(std::string_view owner, const AppWindow& window, const std::vector<AppWindow>& all) {
    const std::string lowerOwner = ToLowerAscii(owner);
    return owner.empty() || std::any_of(all.begin(), all.end(), [&](const AppWindow& other) {
               return other.processId == window.processId && Contains(ToLowerAscii(other.title), lowerOwner);
           });
}

}  // namespace

const std::vector<DialogRule>& DialogRuleTable() {
    static const std::vector<DialogRule> table = {
        {1, kPrintFile, {}, {}, kSave, {"&Save"}},
        {2, kPrintPdf, {}, {}, kSave, {"&Save"}},
        {3, kPrintXps, {}, {}, kSave, {"&Save"}},
        {4, kIs, "Confirm Save As", {}, kReplace, {"&Yes", "&No"}},
        {5, kIs, "Fatal Error", {}, kPress, {"OK"}},
        {6, kIs, "Status not Available", {}, kPress, {"OK"}},
        {7, kIs, "File In Use", "Microsoft Word", kPress, {"OK"}},
        {8, kIs, "File In Use", "Microsoft Office Word", kPress, {"OK"}},
        {9, kIs, "Password", "Microsoft Word", kClose, {}, kPasswordSeconds},
        {10, kIs, "Password", "Microsoft Office Word", kClose, {}, kPasswordSeconds},
        {11, kIs, "Password", "Microsoft Excel", kClose, {}, kPasswordSeconds},
        {12, kIs, "Password", "Microsoft Office Excel", kClose, {}, kPasswordSeconds},
        {13, kIs, "Password", "Microsoft Powerpoint", kClose, {}, kPasswordSeconds},
        {14, kIs, "Password", "Microsoft Office Powerpoint", kClose, {}, kPasswordSeconds},
        {15, kPrintCaption, {}, "Adobe Reader", kReturn},
        {16, kPrintCaption, {}, "Adobe Acrobat", kReturn},
        {17, kBegins, "Print - ", {}, kNone},
        {18, kBegins, "Stampa - ", {}, kNone},
        {19, kBegins, "Drucken - ", {}, kNone},
        {20, kBegins, "Afdrukken - ", {}, kNone},
        {21, kPrintCaption, {}, {}, kPress, {"OK"}},
        {22, kBegins, "HP ", {}, kPress, {"OK"}, kHpClickOk},
    };
    return table;
}

const std::vector<std::string_view>& PrintCaptions() {
    static const std::vector<std::string_view> captions = {
        "Print",    "Stampa",    "Drucken",   "Печать",   "Печат",     "Skriv ut", "列印",
        "打印",     "Afdrukken", "dskriv",    "Udskriv",  "Inprimatu", "dskriv",   "Imprimeix",
        "Tisková",  "Tisk",      "Prindi",    "Tulostus", "Tulosta",   "Imprimer", "Impression",
        "Εκτύπωση", "הדפס",      "Nyomtatás", "印刷",     "인쇄",      "Drukāt",   "Spausdinti",
        "Drukuj",   "Imprimir",  "Imprimare", "Tlač",     "Tlačiť",    "Imprimir", "Impresión",
        "พิมพ์",      "Yazdır",    "Друк",
    };
    return captions;
}

bool IsPrintCaption(std::string_view title) {
    const std::vector<std::string_view>& captions = PrintCaptions();
    return std::find(captions.begin(), captions.end(), title) != captions.end();
}

bool IsPrintProgress(std::string_view title) {
    const std::vector<DialogRule>& table = DialogRuleTable();
    return std::any_of(table.begin(), table.end(), [title](const DialogRule& rule) {
        return rule.answer == kNone && StartsWith(title, rule.title);
    });
}

const DialogRule* FindDialogRule(const AppWindow& window, const std::vector<AppWindow>& all,
                                 const PrintToFileSettings& settings) {
    for (const DialogRule& rule : DialogRuleTable())
        if (HasTitleOf(rule, window.title, settings) && IsOwnedBy(rule.owner, window, all)) return &rule;
    return nullptr;
}

}  // namespace quirepress
