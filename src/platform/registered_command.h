#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/shell.h"

namespace quirepress {

// How Windows keeps the print commands of file types: the texts of its registry of classes, and what becomes
// of them. Nothing here asks the system.

// The text that a key of the registry of classes holds; empty when there is no such key.
using ClassText = std::function<std::string(const std::string& key)>;

// The print command line of files with this ending (".doc"): the one of its class; for PDF, when that has
// none, those of the classes of known viewers. Empty: none.
std::string FindPrintLine(std::string_view extension, const ClassText& read);

// Starts `line` for the file. False when the line has no program, or the path can't stand in a command line.
bool FillCommandLine(std::string_view line, std::string_view path, ProcessRequest& request);

// The system's image viewer, asked to print to one printer.
bool MakePhotoCommand(std::string_view windowsFolder, std::string_view path, std::string_view printer,
                      RegisteredCommand& command);

}  // namespace quirepress
