#include "core/file_transfer.h"

#include <utility>

#include "base/path.h"
#include "core/file_target.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

FileTransfer::End EndOf(FileResult result) {
    return result == FileResult::kDone ? FileTransfer::End::kDone : FileTransfer::End::kNotMoved;
}

}  // namespace

bool MayGoBetterLater(FileResult result) {
    return result == FileResult::kBusy || result == FileResult::kNoAccess || result == FileResult::kFailed;
}

FileTransfer::FileTransfer(TransferServices services, TransferRequest request)
    : m_services(services), m_request(std::move(request)) {}

FileTransfer::~FileTransfer() {
    if (m_isCopied && !IsSourceChanged() && HasSource()) m_services.files.Erase(m_target);
    if (!m_oldVersion.empty())
        m_services.files.Rename(m_oldVersion, JoinPath(m_request.folder, m_request.name), false);
}

FileTransfer::End FileTransfer::Attempt() {
    m_mayGoBetter = false;
    const bool isReady = m_isCopied || PrepareFolder();
    const End end = isReady ? TransferToFolder() : End::kNotMoved;
    if (isReady) m_mayGoBetter = MayGoBetterLater(m_reason);
    const bool isDone = end == End::kDone;
    if (isDone) m_oldVersion.clear();
    DebugLog& debugLog = m_services.debugLog;
    debugLog.Trace("%sMove file status %d\r\n", m_request.traceStart, isDone);
    debugLog.Trace("%sMoveFile: %d, 0=error moving file  %s to %s\r\n", m_request.traceStart, isDone,
                   m_request.from, m_target);
    return end;
}

std::string FileTransfer::DescribeReason() const {
    return m_obstacle.empty() ? DescribeFileResult(m_reason) : m_obstacle;
}

// False when there is nothing to bring, or nowhere to bring it.
bool FileTransfer::PrepareFolder() {
    m_target = JoinPath(m_request.folder, m_request.name);
    m_services.prompts.ShowStatus((m_request.isCopy ? "Copying file to:" : "Moving file to:") + m_target);
    m_reason = FileResult::kMissing;
    m_obstacle.clear();
    if (m_request.folder.empty()) m_obstacle = "no folder is named";
    if (!HasSource()) m_obstacle = "the document is not there any more, or is no file";
    if (!m_obstacle.empty()) return false;
    m_reason = m_services.files.MakeFolders(m_request.folder);
    if (m_reason != FileResult::kDone) {
        const bool isTaken = m_reason == FileResult::kExists;
        m_obstacle = std::string("the folder can't be made: ") +
                     (isTaken ? "a file has its name" : DescribeFileResult(m_reason));
    }
    // A folder that may not be made stays so; a volume that is not there may come back.
    m_mayGoBetter =
        m_reason == FileResult::kMissing || (m_reason != FileResult::kNoAccess && MayGoBetterLater(m_reason));
    return m_reason == FileResult::kDone;
}

FileTransfer::End FileTransfer::TransferToFolder() {
    if (m_isCopied) return EndOf(m_reason = EraseSource());
    // A file that is where it should be already has nowhere to go.
    if (IsAtTarget() || (m_request.isCopy && m_request.mayBeCopied && FindCopy())) return End::kDone;
    m_reason = TransferTo(m_target);
    return m_reason == FileResult::kExists ? TransferToVersion() : EndOf(m_reason);
}

FileTransfer::End FileTransfer::TransferToVersion() {
    Files& files = m_services.files;
    const std::string plain = m_target;
    const bool renamesOld = m_request.renameOld && files.Inspect(plain).kind != FileKind::kFolder;
    const auto find = [&](int first) {
        return FindFreeVersion(files, m_request.folder, m_request.name, first);
    };
    for (int version = find(1); version != 0; version = find(version + 1)) {
        const std::string path = JoinPath(m_request.folder, VersionName(m_request.name, version));
        if (!renamesOld) m_target = path;
        m_reason = renamesOld ? files.Rename(plain, path, false) : TransferTo(path);
        // The name has come to be meanwhile, or differs from another only in what the volume passes over.
        if (m_reason == FileResult::kExists) continue;
        TraceRename(m_reason, plain, path);
        if (!renamesOld) return EndOf(m_reason);
        if (m_reason != FileResult::kDone) return End::kNotRenamed;
        m_oldVersion = path;
        m_reason = TransferTo(plain);
        return EndOf(m_reason);
    }
    m_reason = FileResult::kExists;
    return End::kNoVersionLeft;
}

FileResult FileTransfer::TransferTo(const std::string& target) {
    // A link would lead elsewhere from another folder: what it stands for is brought there instead.
    if (!m_request.isCopy && !IsLink()) {
        const FileResult renamed = m_services.files.Rename(m_request.from, target, false);
        if (renamed != FileResult::kOtherVolume) return renamed;
    }
    const FileResult copied = CopyWhole(target);
    if (copied != FileResult::kDone || m_request.isCopy) return copied;
    return EraseSource();
}

FileResult FileTransfer::CopyWhole(const std::string& target) {
    Files& files = m_services.files;
    m_copiedSource = files.Inspect(m_request.from);
    const std::int64_t room = files.FreeSpace(m_request.folder);
    if (room >= 0 && room < m_copiedSource.size) return FileResult::kNoSpace;
    const FileResult result = CopyFileDurably(files, m_request.from, target, [this] {
        m_services.loop.Pump();
        return true;
    });
    if (result != FileResult::kDone || !IsSourceChanged()) return result;
    files.Erase(target);
    return FileResult::kBusy;
}

FileResult FileTransfer::EraseSource() {
    m_isCopied = false;
    if (IsSourceChanged()) {
        // What is new in it is not at the target.
        m_services.files.Erase(m_target);
        return FileResult::kBusy;
    }
    const FileResult result = m_services.files.Erase(m_request.from);
    if (result == FileResult::kMissing) return FileResult::kDone;
    m_isCopied = result != FileResult::kDone;
    return result;
}

bool FileTransfer::HasSource() const {
    return m_services.files.Inspect(m_request.from).kind == FileKind::kRegular;
}

bool FileTransfer::IsAtTarget() const {
    const std::string source = m_services.files.ResolvePath(m_request.from);
    return !source.empty() && source == m_services.files.ResolvePath(m_target);
}

// Of the version that the source has; the target is its name then.
bool FileTransfer::FindCopy() {
    const FileFacts source = m_services.files.Inspect(m_request.from);
    std::string path = m_target;
    for (int version = 1; version <= kMostVersions; ++version) {
        const FileFacts facts = m_services.files.Inspect(path);
        if (facts.kind == FileKind::kMissing) return false;
        if (facts.size == source.size && facts.written == source.written &&
            HaveSameBytes(m_services.files, m_request.from, path)) {
            m_target = path;
            return true;
        }
        path = JoinPath(m_request.folder, VersionName(m_request.name, version));
    }
    return false;
}

bool FileTransfer::IsLink() const {
    const std::string_view folder = FolderOf(m_request.from);
    const std::string resolvedFolder = m_services.files.ResolvePath(folder.empty() ? "." : folder);
    return JoinPath(resolvedFolder, FileTitle(m_request.from)) !=
           m_services.files.ResolvePath(m_request.from);
}

// Since it was copied; one that is gone has left its copy.
bool FileTransfer::IsSourceChanged() const {
    const FileFacts now = m_services.files.Inspect(m_request.from);
    return now.kind != FileKind::kMissing &&
           (now.size != m_copiedSource.size || now.written != m_copiedSource.written);
}

void FileTransfer::TraceRename(FileResult result, const std::string& from, const std::string& to) {
    const bool isDone = result == FileResult::kDone;
    m_services.debugLog.Trace("Rename File status %d\r\n", isDone);
    m_services.debugLog.Trace("Rename: %d, 0=error renaming file, err code: %d,  %s to %s\r\n", isDone,
                              static_cast<int>(result), from, to);
}

}  // namespace quirepress
