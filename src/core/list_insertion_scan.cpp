#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "core/file_mask.h"
#include "core/list_insertion.h"
#include "logs/debug_log.h"
#include "platform/prompts.h"

namespace quirepress {

// One scan of a folder.
struct ListInsertion::Scan {
    std::string mask;
    bool descend;
    std::set<std::string> visited;  // resolved paths of folders
    int inserted = 0;
};

int ListInsertion::ScanFolder(const std::string& folder, const std::string& mask, bool descend) {
    Scan scan{mask, descend, {}, 0};
    VisitFolder(folder, false, scan);
    return scan.inserted;
}

void ListInsertion::VisitFolder(const std::string& folder, bool isInner, Scan& scan) {
    // Links may lead into a circle.
    const std::string resolved = m_services.files.ResolvePath(folder);
    if (!resolved.empty() && !scan.visited.insert(resolved).second) return;
    m_services.prompts.ShowStatus("Scanning directory: " + folder);
    m_services.debugLog.Trace("*** DoScanDir m_fname: %s, m_type: %s\r\n", folder, scan.mask);
    std::vector<FolderEntry> entries;
    FileResult result = m_services.files.ListFolder(folder, entries);
    // Too deep for the system to tell where it is: nothing would end a circle from here on.
    if (result == FileResult::kDone && resolved.empty()) result = FileResult::kBadName;
    if (result != FileResult::kDone) {
        m_services.debugLog.Trace(isInner ? ".file error: %s\r\n" : "file error: %s\r\n", folder);
        InsertRefusal(folder, Format("Can't open folder: %s", DescribeFileResult(result)));
        return;
    }
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& left, const FolderEntry& right) { return left.name < right.name; });
    const std::string start = WithTrailingSeparator(folder);
    std::string path;
    for (const FolderEntry& entry : entries) {
        if (!m_list.KeepGoing()) return;
        path.assign(start).append(entry.name);
        VisitEntry(entry, path, scan);
    }
}

void ListInsertion::VisitEntry(const FolderEntry& entry, const std::string& path, Scan& scan) {
    if (entry.kind == FileKind::kFolder) {
        m_services.debugLog.Trace("Found Folder: %s, m_type: %s\r\n", path, scan.mask);
        if (scan.descend) VisitFolder(path, true, scan);
        return;
    }
    if (!MatchesMask(entry.name, scan.mask)) return;
    m_services.debugLog.Trace("inserting: %s\r\n", path);
    scan.inserted += Insert(path);
}

}  // namespace quirepress
