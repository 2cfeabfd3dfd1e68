#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quirepress {

class FileLock;
class Files;
struct GeneralOptions;

// A folder of this run's own for files that are needed for a moment; it goes with all that is in it.
class ScratchFolder {
public:
    // Below the temporary folder of the options, in a folder of its purpose where that ends in "/"; not made
    // yet. What a program that died has left in it is gone.
    ScratchFolder(Files& files, const GeneralOptions& options, std::string_view workingFolder,
                  std::string_view purpose);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return m_path; }

private:
    Files& m_files;
    std::string m_path;
    std::string m_lockPath;
    std::unique_ptr<FileLock> m_lock;
};

// A name like that of `path`, with this ending, and with room for what programs add to it.
std::string ScratchName(std::string_view path, std::string_view extension);

// The temporary folder of the options; a relative one lies in the working folder.
std::string TemporaryFolderOf(const GeneralOptions& options, std::string_view workingFolder);

}  // namespace quirepress
