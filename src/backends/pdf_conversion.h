#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/files.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Processes;
struct PrintCommand;
struct ProgramResult;

// What became of one file.
struct Conversion {
    enum class End { kMade, kFailed, kStopped } end = End::kFailed;
    std::string pdf;   // its path, good until Discard, or until its command makes others
    std::string flaw;  // why it was not made, a sentence part
};

// Has programs make PDFs of documents. A command that takes several files converts those ahead that will
// come next, since starting the program takes longer than most documents.
class PdfConverter {
public:
    // Everything is made in `folder`, which belongs to the converter alone, and which the caller erases.
    PdfConverter(Processes& processes, Files& files, EventLoop& loop, DebugLog& debugLog, std::string folder);

    // The PDF of `path`. `upcoming` are files that may be wanted soon and go by the same command. Every
    // program is ended when its time is over or `isStopped` says so. What one call of several files has not
    // made is tried alone, but for the file that used up its time. May pump.
    Conversion Convert(const PrintCommand& command, const std::string& path,
                       const std::vector<std::string>& upcoming, const std::function<bool()>& isStopped);
    // The PDF is not needed any more.
    void Discard(const std::string& path);

private:
    struct Source {
        std::string path;
        std::string taken;  // the path that the program is given
        bool isCopy = false;
        FileFacts facts;
    };
    struct Made {
        std::string command;
        FileFacts facts;     // of the source, before the call
        std::string folder;  // of the call
        std::string pdf;     // empty: it was not made
        std::string flaw;
    };

    bool TakeMade(const PrintCommand& command, const std::string& path, Conversion& conversion);
    std::vector<Source> ChooseFiles(const PrintCommand& command, const std::string& path,
                                    const std::vector<std::string>& upcoming);
    bool MakeSource(const PrintCommand& command, const std::string& path, Source& source);
    std::string OwnFolderOf(const PrintCommand& command);
    // False when it was stopped.
    bool RunCall(const PrintCommand& command, const std::vector<Source>& sources,
                 const std::function<bool()>& isStopped);
    void TakeResults(const PrintCommand& command, const std::vector<Source>& sources,
                     const std::string& folder, const ProgramResult& result);
    // But for those that may still be wanted.
    void ForgetMade(const std::string& command, const std::vector<std::string>& upcoming);

    Processes& m_processes;
    Files& m_files;
    EventLoop& m_loop;
    DebugLog& m_debugLog;
    std::string m_folder;
    std::map<std::string, Made> m_made;               // by the path of the source
    std::set<std::string> m_loners;                   // sources that a call of several has not made
    std::map<std::string, std::string> m_ownFolders;  // by the name of the command
    int m_calls = 0;
};

}  // namespace quirepress
