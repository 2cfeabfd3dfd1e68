#pragma once

#include <functional>
#include <string_view>
#include <vector>

namespace quirepress {

class PrintList;
class Prompts;

// Indices of the selected rows; asked after the user has answered, when the list may have changed.
using SelectedRows = std::function<std::vector<int>()>;

// Asks whether all rows are meant, and writes the move-to folder into them, else into the selected ones.
// Answers how many rows have it now. May pump.
int MoveToCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected, std::string_view moveTo);

// Asks whether only the selected rows are meant, and puts the files that the rows name into another folder.
// Rows that name no file stay as they are. Answers how many rows were changed. May pump.
int RePathCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected, std::string_view folder);

// "Printer Load Balancing": asks whether all rows are meant, and lets them, else the selected ones, go to the
// printers of this text, as ParseBalancedPrinters reads it; the second one takes it from them again. An empty
// list is told to the user. Answers how many rows were meant. May pump.
int LoadBalancingCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected,
                         std::string_view printers);
int LoadBalancingClearCommand(PrintList& list, Prompts& prompts, const SelectedRows& selected);

}  // namespace quirepress
