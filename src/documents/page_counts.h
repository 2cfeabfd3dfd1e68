#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Files;
class InputFile;

// Each counter answers the number of pages, 0 when the file is none of its kind (or holds none), -1 when it
// cannot be read; `status` is then "No" (but for an empty name) and stays as it was otherwise. None reports
// anything to the user, none throws, and none takes more than a bounded time and memory, whatever the file
// holds.

int CountPostScriptPages(Files& files, std::string_view path, std::string& status);

// PCL 5 page ejects and PCL XL EndPage operators, PJL and language switches included. Text without any
// command prints on such a printer, too, and counts like a page that is not ejected.
int CountPclPages(Files& files, std::string_view path, std::string& status);

// The same of an open file.
int CountPostScriptPages(InputFile& file);
int CountPclPages(InputFile& file);

}  // namespace quirepress
