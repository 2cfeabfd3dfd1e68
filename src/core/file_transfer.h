#pragma once

#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Prompts;

struct TransferServices {
    Files& files;
    EventLoop& loop;
    Prompts& prompts;
    DebugLog& debugLog;
};

struct TransferRequest {
    std::string from;
    std::string folder;           // made when it is missing
    std::string name;             // in the folder
    std::string_view traceStart;  // before the lines of the debug log
    bool isCopy = false;
    bool mayBeCopied = false;  // a copy, or a version of it, is what was to be made when it has size and time
    bool renameOld = false;    // when the name is taken, the file that has it gets a version name
};

// Whether what failed so may go better a little later: something is in use, or out of reach just now. A
// program that shows a file can deny access to it.
bool MayGoBetterLater(FileResult result);

// Brings one file into a folder, in as many attempts as its owner makes. The target never is half a file, no
// file is overwritten, and the source goes only when all of it is at the target.
class FileTransfer {
public:
    enum class End { kDone, kNotMoved, kNotRenamed, kNoVersionLeft };

    FileTransfer(TransferServices services, TransferRequest request);
    ~FileTransfer();  // takes back what was done for a file that could not be brought there
    FileTransfer(const FileTransfer&) = delete;
    FileTransfer& operator=(const FileTransfer&) = delete;

    End Attempt();                                          // May pump.
    const std::string& Target() const { return m_target; }  // of the last attempt
    FileResult Reason() const { return m_reason; }          // why the last attempt failed
    std::string DescribeReason() const;                     // for the user, a sentence part
    bool MayGoBetter() const { return m_mayGoBetter; }      // the next one

private:
    bool PrepareFolder();
    End TransferToFolder();
    End TransferToVersion();
    FileResult TransferTo(const std::string& target);
    FileResult CopyWhole(const std::string& target);
    FileResult EraseSource();
    bool HasSource() const;
    bool IsAtTarget() const;
    bool FindCopy();
    bool IsLink() const;
    bool IsSourceChanged() const;
    void TraceRename(FileResult result, const std::string& from, const std::string& to);

    TransferServices m_services;
    TransferRequest m_request;
    std::string m_target;
    FileResult m_reason = FileResult::kDone;
    std::string m_obstacle;  // to any attempt; empty: m_reason says it all
    bool m_mayGoBetter = true;
    bool m_isCopied = false;   // to m_target, and the source is still to be erased
    FileFacts m_copiedSource;  // as it was when it was copied
    std::string m_oldVersion;  // the name that the old file got, until the new one is in its place
};

}  // namespace quirepress
