#include "core/list_commands.h"

#include <numeric>
#include <string>

#include "base/path.h"
#include "core/print_list.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

std::vector<int> AllRows(const PrintList& list) {
    std::vector<int> rows(static_cast<std::size_t>(list.RowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

// A list may come from another system, and be made to fit this one by another folder.
std::string_view TitleOf(std::string_view path) {
    return IsWindowsPath(path) ? path.substr(path.find_last_of("/\\") + 1) : FileTitle(path);
}

// Many commands are words, not files.
bool NamesFile(std::string_view path) {
    const ItemKind kind = KindOfItem(path);
    return kind == ItemKind::kDocument || (kind == ItemKind::kCommand && TitleOf(path) != path);
}

// Into all rows, or the selected ones, as the user wants it.
int WriteColumn(PrintList& list, Prompts& prompts, const SelectedRows& selected, std::string_view title,
                Column column, std::string_view text) {
    const bool isForAll = prompts.AskYesNo(title, "Do you want to apply to all in list?", false);
    const std::vector<int> rows = isForAll ? AllRows(list) : selected();
    for (const int row : rows) list.SetText(row, column, text);
    prompts.ShowStatus("Done");
    return static_cast<int>(rows.size());
}

int WriteBalancedPrinters(PrintList& list, Prompts& prompts, const SelectedRows& selected,
                          std::string_view title, std::string_view printers) {
    if (list.RowCount() == 0) {
        prompts.ShowBox(title, "Please add some files to list first!");
        return 0;
    }
    return WriteColumn(list, prompts, selected, title, kColumnBalancedPrinters, printers);
}

}  // namespace

int MoveToCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected, std::string_view moveTo) {
    return WriteColumn(list, prompts, selected, "MoveTo", kColumnMoveTo, moveTo);
}

int LoadBalancingCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected,
                         std::string_view printers) {
    return WriteBalancedPrinters(list, prompts, selected, "Printer Load Balancing", printers);
}

int LoadBalancingClearCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected) {
    return WriteBalancedPrinters(list, prompts, selected, "Printer Load Balancing Clear", {});
}

int RePathCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected, std::string_view folder) {
    const bool isForSelected = prompts.AskYesNo("Re-Path", "Do you want to change selected only ?", true);
    int changed = 0;
    for (const int row : isForSelected ? selected() : AllRows(list)) {
        const std::string path(list.Text(row, kColumnFilename));
        const std::string_view title = TitleOf(path);
        if (title.empty() || !NamesFile(path)) continue;
        list.SetText(row, kColumnFilename, JoinPath(folder, title));
        ++changed;
    }
    return changed;
}

}  // namespace quirepress
