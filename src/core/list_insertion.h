#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/print_list.h"
#include "platform/files.h"

namespace quirepress {

// One insertion into the list, with everything that its path turns out to stand for. Folders, archives, job
// files and shortcuts lead to further paths, which all get the same texts. The texts handed over outlive it.
class ListInsertion {
public:
    ListInsertion(PrintList& list, int selectMode, std::string_view moveToDir, const ItemTexts& texts);

    // PrintList::InsertFileIntoList
    int Insert(const std::string& path);
    // PrintList::DoScanDir
    int ScanFolder(const std::string& folder, const std::string& mask, bool descend);

private:
    // A job file, archive or shortcut that is being taken in.
    class Container;
    struct Scan;

    int InsertRow(const std::string& path, const FileFacts& facts);
    // An unticked row for what could not be taken in. A run counts it as failed. Always 1.
    int InsertRefusal(const std::string& path, std::string_view reason);
    // What every row gets of the texts handed over.
    ColumnTexts GivenTexts(std::string_view path) const;
    std::string StatusOf(const std::string& path, const FileFacts& facts) const;
    bool IsTicked(ItemKind kind, bool isPrintable) const;
    std::string DateText(Instant instant) const;
    static std::string SizeText(const FileFacts& facts);
    static std::string PagesText(int pages);

    // Hands `path` to one of the three below, unless its taking in would not end.
    int InsertContained(const std::string& path, int (ListInsertion::*insert)(const std::string&));
    int InsertShortcut(const std::string& path);
    int InsertArchive(const std::string& path);
    std::string MakeUnpackFolder(std::string_view archive) const;

    int InsertJob(const std::string& path);
    void InsertJobLine(const std::string& line, const std::string& job);
    void InsertJobRow(const std::vector<std::string>& columns);
    std::string PathInJob(const std::string& text, const std::string& job) const;

    void VisitFolder(const std::string& folder, bool isInner, Scan& scan);
    void VisitEntry(const FolderEntry& entry, const std::string& path, Scan& scan);

    PrintList& m_list;
    PrintListServices& m_services;
    int m_selectMode;
    std::string m_moveToDir;
    const ItemTexts& m_texts;
    std::shared_ptr<RowOrigin> m_origin;        // the innermost that is being taken in
    std::vector<std::string> m_openContainers;  // outermost first
    int m_containersTaken = 0;
};

}  // namespace quirepress
