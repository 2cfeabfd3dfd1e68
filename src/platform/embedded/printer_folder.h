#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/embedded/job_folder.h"
#include "platform/embedded/printer_settings.h"
#include "platform/files.h"

namespace quirepress {

// Why the port takes no job at the moment; shared with other programs, not kept for ever.
struct PortTrouble {
    std::int64_t jobId = 0;         // the job that was tried; 0: there is no trouble
    std::uint32_t printerBits = 0;  // printer_status
    std::uint32_t jobBits = 0;      // job_status
    std::string text;
};

// The folder of one printer and the files in it.
class PrinterFolder {
public:
    PrinterFolder(Files& files, std::string_view workingFolder, std::string_view printer);

    const std::string& Name() const { return m_name; }
    const std::string& Path() const { return m_path; }
    const JobFolder& Jobs() const { return m_jobs; }

    // Whether there is such a printer: a folder with a printer.ini.
    bool Exists() const;
    FileResult ReadSettingsText(std::string& text) const;
    // What cannot be read is told as trouble with the port.
    PrinterSettings ReadSettings() const;
    FileResult ReplaceSettings(std::string_view text);
    std::string SettingsPath() const;
    // Where finished documents of a folder port come to lie; ends without a separator.
    std::string OutputFolder(const PrinterPort& port) const;
    std::string OwnOutputFolder() const;
    // Held by the program that delivers.
    std::string DeliveryLockPath() const;

    PortTrouble ReadTrouble() const;
    void WriteTrouble(const PortTrouble& trouble);
    std::string TroublePath() const;

private:
    Files& m_files;
    std::string m_workingFolder;
    std::string m_name;
    std::string m_path;
    JobFolder m_jobs;
};

std::string PrintersFolder(std::string_view workingFolder);

}  // namespace quirepress
