#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/spooler.h"

namespace quirepress {

class DebugLog;
class FileLock;
class Files;

struct KeptDefault {
    std::string printer;
    std::string choice;  // Spooler::DefaultChoice
};

// The system's default printer as a run changes it. What it was stands in "DefaultPrinter.SYSTEM.note" in the
// working folder until it is set back, so that a later start can do it for a program that was ended. Where no
// note can be written the run goes on without.
class RunDefault {
public:
    RunDefault(Spooler& spooler, Files& files, DebugLog& debugLog, std::string_view workingFolder);
    ~RunDefault();
    RunDefault(const RunDefault&) = delete;
    RunDefault& operator=(const RunDefault&) = delete;

    KeptDefault Keep() { return {m_spooler.DefaultPrinter(), m_spooler.DefaultChoice()}; }
    // 0 when it is as it was kept.
    int RestoreChoice(const KeptDefault& kept);

    // What a run that is under way in this working folder has set is not the user's.
    std::string UsersOwn();
    // 0 or -1. Noted while a run is under way.
    int MakeDefaultPrinter(std::string_view printer);
    void BeginRun();
    const KeptDefault& BeforeRun() const { return m_before; }
    // True when it is the run that has made the default printer what it is.
    bool EndRun();
    // After EndRun. `isBack`: there is nothing left for a later start to set back.
    void CloseNote(bool isBack);
    // What an ended program has left changed, unless somebody has changed it again.
    void BringBackLeft();

private:
    struct Note {
        KeptDefault before;
        std::vector<std::string> setTo;  // all that the run has made the default printer, or was about to
    };

    bool ReadNote(Note& note);
    bool IsSetByOther(std::string_view printer, Note& note);
    void WriteNote(std::string_view printer);
    bool Exists(std::string_view printer);

    Spooler& m_spooler;
    Files& m_files;
    DebugLog& m_debugLog;
    std::string m_notePath;
    std::string m_lockPath;
    bool m_isInRun = false;
    KeptDefault m_before;
    std::vector<std::string> m_setTo;  // the last that was set, and what may have been since
    Note m_note;                       // as it lies on the disk; of no printers when there is none
    std::unique_ptr<FileLock> m_lock;  // while the note is this run's
};

}  // namespace quirepress
