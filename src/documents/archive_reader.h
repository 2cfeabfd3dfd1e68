#pragma once

#include <array>
#include <cstdint>
#include <string>

struct archive;
struct archive_entry;

namespace quirepress {

class InputFile;

// One pass over the entries of an archive, whatever its kind: zip, rar, 7z, or tar with any of the usual
// compressions. Reads through `file`, which outlives it.
class ArchiveReader {
public:
    enum class Step { kEntry, kEnd, kDamaged, kEncrypted, kNoArchive };

    explicit ArchiveReader(InputFile& file);
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    // Goes to the next entry. After any other answer than kEntry there is nothing more to be had.
    Step TakeEntry();

    // Of the entry at hand.
    std::string EntryName() const;  // UTF-8 where the archive tells its names' code, else the bytes in it
    bool IsFile() const;            // a regular file with data of its own
    bool IsFolder() const;
    bool IsEncrypted() const;

    // Bytes of the entry's data, 0 at its end, -1 when it is damaged (this one, or all that follows).
    std::int64_t ReadData(void* buffer, std::size_t size);
    // Whether what has been read is as long as the archive says.
    bool IsWhole() const;

private:
    static std::int64_t Read(archive* reader, void* self, const void** buffer);
    static std::int64_t Skip(archive* reader, void* self, std::int64_t bytes);
    static std::int64_t Seek(archive* reader, void* self, std::int64_t offset, int whence);
    Step ToStep(int failure) const;

    InputFile& m_file;
    archive* m_reader;
    archive_entry* m_entry = nullptr;
    std::int64_t m_offset = 0;
    std::int64_t m_dataRead = 0;
    bool m_anyEntry = false;
    std::array<char, 65536> m_buffer;
};

}  // namespace quirepress
