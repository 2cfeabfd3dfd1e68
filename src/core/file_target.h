#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Files;

// What a row's move-to text asks for.
enum class MoveAction { kNone, kErase, kEraseWithJob, kEraseJob, kCopy, kMove };
struct MoveTarget {
    MoveAction action = MoveAction::kNone;
    std::string folder;  // as it was given; of kCopy and kMove
};

// "qprdelete", "qprdelete+job" and "qprjobdelete" exactly; "copy:", "Copy:" or "COPY:" before a folder; else
// the text is a folder.
MoveTarget ParseMoveTo(std::string_view moveTo);

// The merged PDF of a run that appends: a temporary file, known by its name.
bool IsMergedFile(std::string_view path);

// The name that the file `path` gets in its target: that of `title`, reduced to a file name, with the file's
// own extension; where there is no such name, the file's own.
std::string TargetName(std::string_view path, std::string_view title);

// "report_v2.pdf" for ("report.pdf", 2).
std::string VersionName(std::string_view name, int version);
constexpr int kMostVersions = 999'999;

// The lowest version from `first` on whose name is not among those of `folder`; 0 when there is none. Of a
// folder that can't be listed, `first`.
int FindFreeVersion(Files& files, std::string_view folder, std::string_view name, int first);

// `moveTo` extended by the folders on the way from the monitored folder down to the file `path`. Markers,
// the empty text and that of a file that lies elsewhere stay as they are.
std::string ExtendMoveTo(std::string_view moveTo, std::string_view monitoredFolder, std::string_view path);

}  // namespace quirepress
