#include "logs/log_index.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "logs/log_pieces.h"

namespace quirepress {

namespace {

// Enough to know a log again that has grown.
constexpr std::int64_t kRememberedBytes = 4096;
constexpr std::int64_t kTypicalLine = 360;

std::uint64_t LoadWord(const char* bytes, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

std::uint64_t Mixed(std::uint64_t state, std::uint64_t word, std::uint64_t odd) {
    return ((state << 29U | state >> 35U) ^ word) * odd;
}

// Not for keys from an enemy: a line found by it is compared byte by byte.
std::uint32_t HashBytes(std::string_view bytes) {
    constexpr std::uint64_t kOdd1 = 0x9E3779B97F4A7C15;
    constexpr std::uint64_t kOdd2 = 0xC2B2AE3D27D4EB4F;
    constexpr std::size_t kWord = 8;
    // Four chains at a time, none of which waits for another.
    std::uint64_t chains[4] = {bytes.size(), kOdd1, kOdd2, ~kOdd1};
    for (; bytes.size() >= 4 * kWord; bytes.remove_prefix(4 * kWord))
        for (std::size_t i = 0; i < 4; ++i)
            chains[i] = Mixed(chains[i], LoadWord(bytes.data() + i * kWord, kWord), kOdd1);
    for (; bytes.size() >= kWord; bytes.remove_prefix(kWord))
        chains[0] = Mixed(chains[0], LoadWord(bytes.data(), kWord), kOdd1);
    chains[0] = Mixed(chains[0], LoadWord(bytes.data(), bytes.size()), kOdd1);
    for (std::size_t i = 1; i < 4; ++i) chains[0] = Mixed(chains[0], chains[i] ^ chains[i] >> 32U, kOdd2);
    return static_cast<std::uint32_t>(chains[0] >> 32U);
}

bool IsSameFile(const FileFacts& left, const FileFacts& right) {
    return left.readable == right.readable && left.size == right.size && left.written == right.written &&
           left.created == right.created;
}

}  // namespace

LogIndex::LogIndex(Files& files, std::string path) : m_files(files), m_path(std::move(path)) {}

bool LogIndex::Refresh(const KeyColumns& columns) {
    // Looked at before it is read, so that what comes meanwhile is noticed the next time.
    const FileFacts facts = m_files.Inspect(m_path);
    const bool isSameView = columns == m_columns;
    if (isSameView && IsSameFile(facts, m_facts)) return true;
    CloseLog();
    if (!isSameView || !ContinuesWhatWasRead(facts)) Forget();
    m_columns = columns;
    if (facts.kind == FileKind::kMissing) return true;
    if (!Open() || !ReadOn()) return false;
    m_facts = facts;
    return true;
}

bool LogIndex::Open() {
    FileResult result = FileResult::kFailed;
    if (!m_file) m_file = m_files.OpenForReading(m_path, result);
    return m_file != nullptr;
}

// Whether the log is the one that was read, with something appended.
bool LogIndex::ContinuesWhatWasRead(const FileFacts& facts) {
    if (m_readEnd == 0 || facts.created != m_facts.created || facts.size <= m_facts.size) return false;
    if (!Open()) return false;
    std::string bytes(m_lastBytes.size(), '\0');
    const std::int64_t start = m_readEnd - static_cast<std::int64_t>(bytes.size());
    return m_file->ReadAt(start, bytes.data(), bytes.size()) == static_cast<std::int64_t>(bytes.size()) &&
           bytes == m_lastBytes;
}

void LogIndex::Forget() {
    m_facts = FileFacts();
    m_entries.clear();
    m_buckets.clear();
    m_readEnd = 0;
    m_lastBytes.clear();
    m_openLine.clear();
}

bool LogIndex::ReadOn() {
    const std::size_t before = m_entries.size();
    if (before == 0)
        m_entries.reserve(static_cast<std::size_t>(std::max<std::int64_t>(m_file->Size(), 0) / kTypicalLine));
    m_openLine.clear();
    LogPieces pieces(*m_file, m_readEnd);
    for (std::string_view line; pieces.TakePiece(line); m_readEnd = pieces.Offset()) {
        if (!pieces.IsEnded(line)) {
            m_openLine = line;
            break;
        }
        AddLine(m_readEnd, line);
    }
    LinkEntriesFrom(before);
    if (pieces.HasFailed()) return false;
    m_lastBytes.resize(static_cast<std::size_t>(std::min(m_readEnd, kRememberedBytes)));
    const auto size = static_cast<std::int64_t>(m_lastBytes.size());
    return m_file->ReadAt(m_readEnd - size, m_lastBytes.data(), m_lastBytes.size()) == size;
}

void LogIndex::AddLine(std::int64_t offset, std::string_view line) {
    if (line.size() < m_columns.start + m_columns.width) return;
    m_entries.push_back({offset, HashKey(line), 0});
}

// Not line by line: the buckets lie far apart in memory, and one after the other they are waited for
// together.
void LogIndex::LinkEntriesFrom(std::size_t first) {
    if (m_entries.size() > m_buckets.size()) {
        m_buckets.assign(std::bit_ceil(m_entries.size()), 0);
        first = 0;
    }
    const std::size_t mask = m_buckets.size() - 1;
    for (std::size_t i = first; i < m_entries.size(); ++i) {
        std::uint32_t& bucket = m_buckets[m_entries[i].hash & mask];
        m_entries[i].next = std::exchange(bucket, static_cast<std::uint32_t>(i + 1));
    }
}

std::uint32_t LogIndex::HashKey(std::string_view line) {
    if (m_columns.blanks.empty()) return HashBytes(line.substr(m_columns.start, m_columns.width));
    m_scratch = line.substr(0, m_columns.start + m_columns.width);
    for (const KeyColumns::Blank& blank : m_columns.blanks)
        m_scratch.replace(blank.start, blank.text.size(), blank.text);
    return HashBytes(std::string_view(m_scratch).substr(m_columns.start));
}

bool LogIndex::HasLine(std::string_view wanted) {
    if (Matches(m_openLine, wanted)) return true;
    if (m_entries.empty()) return false;
    const std::uint32_t hash = HashBytes(wanted.substr(0, m_columns.width));
    for (std::uint32_t i = m_buckets[hash & (m_buckets.size() - 1)]; i != 0; i = m_entries[i - 1].next)
        if (m_entries[i - 1].hash == hash && IsLineAt(m_entries[i - 1].offset, wanted)) return true;
    return false;
}

bool LogIndex::IsLineAt(std::int64_t offset, std::string_view wanted) {
    const std::size_t size = m_columns.start + wanted.size();
    if (size > kLogPieceLimit || !Open()) return false;
    std::string line(size, '\0');
    return m_file->ReadAt(offset, line.data(), size) == static_cast<std::int64_t>(size) &&
           Matches(line, wanted);
}

bool LogIndex::Matches(std::string_view line, std::string_view wanted) {
    if (line.size() < m_columns.start + wanted.size()) return false;
    m_scratch = line;
    for (const KeyColumns::Blank& blank : m_columns.blanks)
        m_scratch.replace(blank.start, blank.text.size(), blank.text);
    return std::string_view(m_scratch).substr(m_columns.start, wanted.size()) == wanted;
}

}  // namespace quirepress
