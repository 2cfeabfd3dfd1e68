#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/embedded/printer_folder.h"

namespace quirepress {

// The printers of a working folder, shared by every program that works there. Nothing is kept in memory.
class PrinterDirectory {
public:
    PrinterDirectory(Files& files, std::string_view workingFolder)
        : m_files(files), m_workingFolder(workingFolder) {}

    // On first use there is one printer, which is the default. 0, or -1 with `message`.
    int MakeFirst(std::string& message);
    PrinterFolder At(std::string_view printer) const;
    std::vector<std::string> Names() const;  // sorted

    std::string Default() const;  // empty when there is none
    int MakeDefault(std::string_view printer);
    int ForgetDefault();  // there is none then

    // Results and messages are those of PrinterAdministration.
    int Create(std::string_view printer, std::string_view port, std::string& message);
    int Remove(std::string_view printer, std::string& message);
    int SetPaused(std::string_view printer, bool paused, std::string& message);

private:
    std::string DefaultPath() const;
    void ClearFolder(PrinterFolder& printer);

    Files& m_files;
    std::string m_workingFolder;
};

}  // namespace quirepress
