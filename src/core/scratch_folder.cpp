#include "core/scratch_folder.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/files.h"
#include "settings/general_options.h"

namespace quirepress {

std::string TemporaryFolderOf(const GeneralOptions& options, std::string_view workingFolder) {
    const std::string folder = options.m_tempFolder.empty() ? "Temp" : options.m_tempFolder;
    return IsAbsolutePath(folder) ? folder : JoinPath(workingFolder, folder);
}

std::string ScratchName(std::string_view path, std::string_view extension) {
    constexpr std::size_t kLongestStem = 200;
    return std::string(CutToSize(TitleWithoutExtension(path), kLongestStem)) + std::string(extension);
}

ScratchFolder::ScratchFolder(Files& files, const GeneralOptions& options, std::string_view workingFolder,
                             std::string_view purpose)
    : m_files(files) {
    constexpr int kMostFolders = 1000;
    const std::string folder = TemporaryFolderOf(options, workingFolder);
    m_files.MakePrivateFolders(FolderOf(JoinPath(folder, std::string(purpose) + "1")));
    for (int i = 1; i <= kMostFolders && !m_lock; ++i) {
        m_path = JoinPath(folder, std::string(purpose) + std::to_string(i));
        m_lockPath = m_path + ".lock";
        FileResult result = FileResult::kDone;
        m_lock = m_files.TryLock(m_lockPath, result);
        if (result != FileResult::kBusy) break;  // it is ours, or nothing can be made there
    }
    if (m_lock) EraseTree(m_files, m_path);
}

ScratchFolder::~ScratchFolder() {
    if (!m_lock) return;
    EraseTree(m_files, m_path);
    m_files.Erase(m_lockPath);
}

}  // namespace quirepress
