#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// Paths are byte strings. "/" separates everywhere; "\" does so where it is the platform's own separator
// (elsewhere it is an ordinary character of a file name and stays one).

char PlatformSeparator();
std::string_view PlatformLineEnd();  // of text files: LF, or CR LF where "\\" separates
bool IsSeparator(char c);

// The file name without its folder: "report.pdf" for "/data/report.pdf"; empty when the path ends in a
// separator.
std::string_view FileTitle(std::string_view path);

// The title up to its last ".", when that "." is past the first character; else the whole title.
std::string_view TitleWithoutExtension(std::string_view path);

// The title's ending from its last ".", that included: ".pdf"; empty when there is none.
std::string_view FileExtension(std::string_view path);

// What stands before the title, the separator included; empty when there is no folder.
std::string_view FolderOf(std::string_view path);

// `folder` and `name` with exactly one separator between them; `name` alone when `folder` is empty.
std::string JoinPath(std::string_view folder, std::string_view name);

// The same folder, ending in a separator: the form of the working folder. Empty stays empty.
std::string WithTrailingSeparator(std::string_view folder);

bool IsAbsolutePath(std::string_view path);

// A whole path of Windows, whatever the platform: a job may be written there and read elsewhere.
bool IsWindowsPath(std::string_view path);

// A text from another system's list file with both kinds of separator turned into the platform's.
std::string ToPlatformSeparators(std::string_view path);

}  // namespace quirepress
