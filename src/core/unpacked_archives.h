#pragma once

namespace quirepress {

class Files;
class PrintList;
class Prompts;

// Those whose documents are about to be printed. One that has changed since it was unpacked stays: what is
// in it now is not in the list. Tells of each that stays. May pump.
void DeleteUnpackedArchives(PrintList& list, Files& files, Prompts& prompts);

}  // namespace quirepress
