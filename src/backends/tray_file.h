#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Files;

// A tray file (".tra") holds the name of a paper tray, as the printer's driver lists it.

constexpr std::size_t kLongestTrayName = 24;  // characters
constexpr std::string_view kTraySaveErrorTitle = "Tray File Save Error";

// 0 and "Tray file saved.", or -1 with why not; the file stays as it was then.
int SaveTrayFile(Files& files, std::string_view path, std::string_view trayName, std::string& message);

// 0, or -1 with `message` when the file cannot be read, is empty, or holds more than a name.
int LoadTrayFile(Files& files, std::string_view path, std::string& trayName, std::string& message);

// A name as drivers list it, and as tray names are compared: UTF-8, of the 24 characters that there is room
// for.
std::string ListedTrayName(std::string_view name);

}  // namespace quirepress
