#include "logs/log_sweep.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "base/path.h"
#include "logs/buffered_output.h"
#include "logs/fixed_record.h"
#include "logs/log_pieces.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

// The lines that stay. While they are the log's own bytes nothing is written: most sweeps find nothing.
class KeptLines {
public:
    KeptLines(InputFile& log, OutputFile& target) : m_log(log), m_output(target) {}

    bool AreTheLog() const { return !m_isWriting; }
    FileResult Result() const { return m_output.Result(); }
    FileResult Flush() { return m_output.Flush(); }

    void Keep(std::string_view piece, std::string_view line) {
        const bool isSame = piece.size() == line.size() + kRecordEnd.size();
        if (isSame && !m_isWriting) {
            m_same += static_cast<std::int64_t>(piece.size());
            return;
        }
        StartWriting();
        if (isSame) {
            m_output.Append(piece);
            return;
        }
        m_output.Append(line);
        m_output.Append(kRecordEnd);
    }
    void Remove() { StartWriting(); }
    bool HasFailed() const { return m_hasFailed || m_output.Result() != FileResult::kDone; }

private:
    void StartWriting() {
        if (m_isWriting) return;
        m_isWriting = true;
        constexpr std::int64_t kBlockSize = std::int64_t{256} << 10;
        std::string block;
        for (std::int64_t done = 0; done < m_same; done += static_cast<std::int64_t>(block.size())) {
            block.resize(static_cast<std::size_t>(std::min(kBlockSize, m_same - done)));
            const std::int64_t read = m_log.ReadAt(done, block.data(), block.size());
            m_hasFailed = read != static_cast<std::int64_t>(block.size());
            if (m_hasFailed) return;
            m_output.Append(block);
        }
    }

    InputFile& m_log;
    BufferedOutput<OutputFile> m_output;
    std::int64_t m_same = 0;  // bytes from the start of the log
    bool m_isWriting = false;
    bool m_hasFailed = false;
};

// One sweep, from the opening of its files to the replacement of the log.
class Sweeper {
public:
    Sweeper(Files& files, EventLoop& loop, const LogSweep& sweep)
        : m_files(files), m_loop(loop), m_sweep(sweep), m_path(files.ResolvePath(sweep.logPath)) {}

    std::int64_t Run(FileResult& result) {
        result = Open();
        if (result == FileResult::kDone) result = SweepLines();
        if (result == FileResult::kDone) result = FinishArchive();
        if (result == FileResult::kDone && !m_kept->AreTheLog()) result = ReplaceLog();
        const bool isDone = result == FileResult::kDone;
        Tidy(isDone);
        return isDone ? m_removed : 0;
    }

private:
    FileResult Open() {
        FileResult result = FileResult::kFailed;
        m_log = m_files.OpenForReading(m_path, result);
        if (!m_log) return result;
        m_new = m_files.OpenForWriting(NewPath(), OpenMode::kReplace, FileAccess::kShared, result);
        if (!m_new) return result;
        m_pieces.emplace(*m_log);
        m_kept.emplace(*m_log, *m_new);
        return m_sweep.archivePath.empty() ? FileResult::kDone : OpenArchive();
    }

    FileResult OpenArchive() {
        FileResult result = m_files.MakeFolders(FolderOf(m_sweep.archivePath));
        if (result != FileResult::kDone) return result;
        m_archiveHadLines = m_files.Inspect(m_sweep.archivePath).size > 0;
        m_archiveFile =
            m_files.OpenForWriting(m_sweep.archivePath, OpenMode::kAppend, FileAccess::kShared, result);
        if (m_archiveFile) m_archive.emplace(*m_archiveFile);
        return result;
    }

    FileResult SweepLines() {
        for (std::string_view piece; m_pieces->TakePiece(piece);) {
            PumpNowAndThen();
            const std::string_view line = WithoutLineEnd(piece);
            if (!m_sweep.isRemoved(line)) {
                m_kept->Keep(piece, line);
            } else {
                ++m_removed;
                m_kept->Remove();
                Archive(line);
            }
            if (m_kept->HasFailed()) break;
        }
        if (m_kept->Result() != FileResult::kDone) return m_kept->Result();
        return m_pieces->HasFailed() || m_kept->HasFailed() ? FileResult::kFailed : FileResult::kDone;
    }

    void Archive(std::string_view line) {
        if (!m_archive) return;
        m_archive->Append(line);
        m_archive->Append(kRecordEnd);
    }

    void PumpNowAndThen() {
        constexpr long long kInterval = 50;
        const long long now = m_loop.MonotonicMilliseconds();
        if (now - m_lastPump < kInterval) return;
        m_loop.Pump();
        m_lastPump = m_loop.MonotonicMilliseconds();
    }

    FileResult FinishArchive() {
        if (!m_archive) return FileResult::kDone;
        FileResult result = m_archive->Flush();
        if (result == FileResult::kDone && m_removed > 0) result = m_archiveFile->FlushToDisk();
        return result;
    }

    FileResult FlushNew() {
        FileResult result = m_kept->Flush();
        if (result == FileResult::kDone) result = m_new->FlushToDisk();
        if (result == FileResult::kDone) result = FinishArchive();
        return result;
    }

    FileResult ReplaceLog() {
        FileResult result = FileResult::kDone;
        // Flushing takes its time: what was appended to the log meanwhile is swept too, until nothing was.
        for (std::int64_t swept = -1; result == FileResult::kDone && swept != m_pieces->Offset();) {
            result = FlushNew();
            swept = m_pieces->Offset();
            if (result == FileResult::kDone) result = SweepLines();
        }
        if (result == FileResult::kDone) result = m_new->Close();
        m_isNewWhole = result == FileResult::kDone;
        m_log.reset();
        m_new.reset();
        return m_isNewWhole ? m_files.Rename(NewPath(), m_path, true) : result;
    }

    // A whole new file that could not take the log's place is left for the user to see.
    void Tidy(bool isDone) {
        const bool hasNew = m_kept.has_value();
        const bool isArchiveOfNothing = m_archive && !m_archiveHadLines && (!isDone || m_removed == 0);
        m_archiveFile.reset();
        m_new.reset();
        if (hasNew && !m_isNewWhole) m_files.Erase(NewPath());
        if (isArchiveOfNothing) m_files.Erase(m_sweep.archivePath);
    }

    std::string NewPath() const { return m_path + ".new"; }

    Files& m_files;
    EventLoop& m_loop;
    const LogSweep& m_sweep;
    std::string m_path;
    std::unique_ptr<InputFile> m_log;
    std::unique_ptr<OutputFile> m_new;
    std::unique_ptr<OutputFile> m_archiveFile;
    std::optional<LogPieces> m_pieces;
    std::optional<KeptLines> m_kept;
    std::optional<BufferedOutput<OutputFile>> m_archive;
    bool m_archiveHadLines = false;
    bool m_isNewWhole = false;
    std::int64_t m_removed = 0;
    long long m_lastPump = 0;
};

}  // namespace

std::int64_t SweepLog(Files& files, EventLoop& loop, const LogSweep& sweep, FileResult& result) {
    return Sweeper(files, loop, sweep).Run(result);
}

}  // namespace quirepress
