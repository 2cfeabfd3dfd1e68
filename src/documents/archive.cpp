#include "documents/archive.h"

#include <clocale>
#include <memory>
#include <unordered_map>

#include "base/entry_names.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "documents/archive_reader.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::int64_t kRatioMattersFrom = std::int64_t{64} << 20;
constexpr std::size_t kBlockSize = std::size_t{256} << 10;
constexpr int kMostNameTries = 1000;  // beyond the number where the last file of that name ended

// Names kept in the archive as UTF-16 or marked as UTF-8 come out as UTF-8 only under such a character
// locale; what it was before comes back at the end.
class Utf8Names {
public:
    Utf8Names() : m_before(std::setlocale(LC_CTYPE, nullptr)) { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    ~Utf8Names() { std::setlocale(LC_CTYPE, m_before.c_str()); }
    Utf8Names(const Utf8Names&) = delete;
    Utf8Names& operator=(const Utf8Names&) = delete;

private:
    std::string m_before;
};

class Unpacker {
public:
    Unpacker(Files& files, InputFile& input, std::string_view folder, const ArchiveLimits& limits,
             const std::function<bool()>& keepGoing)
        : m_files(files),
          m_reader(input),
          m_packed(input.Size()),
          m_folder(folder),
          m_limits(limits),
          m_keepGoing(keepGoing),
          m_block(std::make_unique<char[]>(kBlockSize)) {}

    ArchiveOutcome Run();

private:
    enum class Outcome { kGoOn, kEnd };

    Outcome UnpackEntry();
    Outcome UnpackFile(const std::vector<std::string>& parts);
    Outcome CopyData(OutputFile& file, const std::string& name, bool& whole);
    std::unique_ptr<OutputFile> CreateFile(const std::string& folder, const std::string& name,
                                           std::string& path, FileResult& result);
    std::string FolderFor(const std::vector<std::string>& parts) const;
    bool IsTooMuch();
    void CloseWithStep(ArchiveReader::Step step);
    // The first thing that went wrong is what the user is told.
    void Note(std::string message) {
        if (m_outcome.message.empty()) m_outcome.message = std::move(message);
    }

    Files& m_files;
    ArchiveReader m_reader;
    std::int64_t m_packed;
    std::string m_folder;
    const ArchiveLimits& m_limits;
    const std::function<bool()>& m_keepGoing;
    std::unique_ptr<char[]> m_block;
    ArchiveOutcome m_outcome;
    std::string m_madeFolder;
    std::unordered_map<std::string, int> m_lastNumbers;  // of each path, in lower case
    std::int64_t m_entries = 0;
    std::int64_t m_bytes = 0;
    int m_damaged = 0;
};

ArchiveOutcome Unpacker::Run() {
    ArchiveReader::Step step = ArchiveReader::Step::kEntry;
    Outcome outcome = Outcome::kGoOn;
    while (outcome == Outcome::kGoOn) {
        step = m_reader.TakeEntry();
        if (step != ArchiveReader::Step::kEntry) break;
        outcome = UnpackEntry();
    }
    CloseWithStep(step);
    if (m_outcome.message.empty()) m_outcome.result = 0;
    return std::move(m_outcome);
}

void Unpacker::CloseWithStep(ArchiveReader::Step step) {
    const auto complete = static_cast<int>(m_outcome.files.size());
    switch (step) {
        case ArchiveReader::Step::kEntry:
        case ArchiveReader::Step::kEnd:
            break;
        case ArchiveReader::Step::kNoArchive:
            Note("It is no archive of a known kind, or damaged");
            break;
        case ArchiveReader::Step::kEncrypted:
            Note("The archive is protected by a password");
            break;
        case ArchiveReader::Step::kDamaged:
            ++m_damaged;
            break;
    }
    if (m_damaged > 0) Note(Format("The archive is damaged, only %d of its files came out whole", complete));
}

Unpacker::Outcome Unpacker::UnpackEntry() {
    if (!m_keepGoing()) {
        Note("Stopped");
        return Outcome::kEnd;
    }
    if (++m_entries > m_limits.entries) {
        Note(Format("The archive holds more than %d entries, the limit", m_limits.entries));
        return Outcome::kEnd;
    }
    if (m_reader.IsFolder()) return Outcome::kGoOn;
    const std::vector<std::string> parts =
        m_reader.IsFile() ? CleanEntryName(m_reader.EntryName()) : std::vector<std::string>();
    if (parts.empty()) {
        ++m_outcome.leftOut;
        return Outcome::kGoOn;
    }
    if (static_cast<std::int64_t>(parts.size()) - 1 > m_limits.folderDepth) {
        Note(Format("The archive holds folders deeper than %d, the limit", m_limits.folderDepth));
        return Outcome::kEnd;
    }
    if (m_reader.IsEncrypted()) {
        Note("The archive is protected by a password");
        return Outcome::kGoOn;
    }
    return UnpackFile(parts);
}

std::string Unpacker::FolderFor(const std::vector<std::string>& parts) const {
    std::string folder = m_folder;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) folder = JoinPath(folder, parts[i]);
    return folder;
}

std::unique_ptr<OutputFile> Unpacker::CreateFile(const std::string& folder, const std::string& name,
                                                 std::string& path, FileResult& result) {
    if (folder != m_madeFolder) {
        result = m_files.MakeFolders(folder);
        if (result != FileResult::kDone) return nullptr;
        m_madeFolder = folder;
    }
    const std::string plain = JoinPath(folder, name);
    int& number = m_lastNumbers[ToLowerAscii(plain)];
    for (int i = 0; i < kMostNameTries; ++i) {
        ++number;
        path = number == 1 ? plain : JoinPath(folder, NumberedName(name, number));
        auto file = m_files.OpenForWriting(path, OpenMode::kCreateNew, FileAccess::kShared, result);
        if (file || result != FileResult::kExists) return file;
    }
    return nullptr;
}

Unpacker::Outcome Unpacker::UnpackFile(const std::vector<std::string>& parts) {
    const std::string& name = parts.back();
    std::string path;
    FileResult result = FileResult::kFailed;
    std::unique_ptr<OutputFile> file = CreateFile(FolderFor(parts), name, path, result);
    if (!file) {
        Note(Format("Can't write %s: %s", name, DescribeFileResult(result)));
        return result == FileResult::kNoSpace ? Outcome::kEnd : Outcome::kGoOn;
    }
    bool whole = false;
    Outcome outcome = CopyData(*file, name, whole);
    const FileResult closed = file->Close();
    if (whole && closed != FileResult::kDone) {
        Note(Format("Can't write %s: %s", name, DescribeFileResult(closed)));
        outcome = Outcome::kEnd;
        whole = false;
    }
    file.reset();
    if (whole)
        m_outcome.files.push_back(std::move(path));
    else
        m_files.Erase(path);
    return outcome;
}

// `whole` when all of the entry's data are in `file`.
Unpacker::Outcome Unpacker::CopyData(OutputFile& file, const std::string& name, bool& whole) {
    for (;;) {
        const std::int64_t read = m_reader.ReadData(m_block.get(), kBlockSize);
        if (read < 0 || (read == 0 && !m_reader.IsWhole())) {
            ++m_damaged;
            return Outcome::kGoOn;
        }
        whole = read == 0;
        if (whole) return Outcome::kGoOn;
        m_bytes += read;
        if (IsTooMuch()) return Outcome::kEnd;
        const FileResult written = file.Write(m_block.get(), static_cast<std::size_t>(read));
        if (written != FileResult::kDone) {
            Note(Format("Can't write %s: %s", name, DescribeFileResult(written)));
            return Outcome::kEnd;
        }
        if (!m_keepGoing()) {
            Note("Stopped");
            return Outcome::kEnd;
        }
    }
}

bool Unpacker::IsTooMuch() {
    if (m_bytes > m_limits.bytes) {
        Note(Format("The archive unpacks to more than %d bytes, the limit", m_limits.bytes));
        return true;
    }
    if (m_bytes > kRatioMattersFrom && m_bytes / m_limits.ratio > m_packed) {
        Note(Format("The archive unpacks to more than %d times its size, the limit", m_limits.ratio));
        return true;
    }
    return false;
}

}  // namespace

ArchiveOutcome UnpackArchive(Files& files, std::string_view archive, std::string_view folder,
                             const ArchiveLimits& limits, const std::function<bool()>& keepGoing) {
    ArchiveOutcome outcome;
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> input = files.OpenForReading(archive, result);
    if (!input) {
        outcome.message = Format("The archive can't be opened: %s", DescribeFileResult(result));
        return outcome;
    }
    result = files.MakeFolders(folder);
    if (result != FileResult::kDone) {
        outcome.message = Format("The folder %s can't be made: %s", folder, DescribeFileResult(result));
        return outcome;
    }
    const Utf8Names utf8Names;
    return Unpacker(files, *input, folder, limits, keepGoing).Run();
}

}  // namespace quirepress
