#include "documents/archive_reader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/files.h"

namespace quirepress {

namespace {

// A reader may ask to be called again; one that never stops asking is damaged.
constexpr int kMostRetries = 100;

// Empty when it is none that UTF-8 can say.
std::string ToUtf8(const wchar_t* name) {
    try {
        const std::u8string text = std::filesystem::path(name).u8string();
        return {text.begin(), text.end()};
    } catch (const std::filesystem::filesystem_error&) {
        return {};
    }
}

}  // namespace

ArchiveReader::ArchiveReader(InputFile& file) : m_file(file), m_reader(archive_read_new()) {
    archive_read_support_format_zip(m_reader);
    archive_read_support_format_rar(m_reader);
    archive_read_support_format_rar5(m_reader);
    archive_read_support_format_7zip(m_reader);
    archive_read_support_format_tar(m_reader);
    archive_read_support_filter_gzip(m_reader);
    archive_read_support_filter_bzip2(m_reader);
    archive_read_support_filter_xz(m_reader);
    archive_read_support_filter_zstd(m_reader);
    archive_read_set_callback_data(m_reader, this);
    archive_read_set_read_callback(m_reader, Read);
    archive_read_set_skip_callback(m_reader, Skip);
    archive_read_set_seek_callback(m_reader, Seek);
}

ArchiveReader::~ArchiveReader() {
    archive_read_free(m_reader);
}

std::int64_t ArchiveReader::Read(archive* reader, void* self, const void** buffer) {
    auto& me = *static_cast<ArchiveReader*>(self);
    const std::int64_t read = me.m_file.ReadAt(me.m_offset, me.m_buffer.data(), me.m_buffer.size());
    if (read < 0) {
        archive_set_error(reader, EIO, "The file cannot be read");
        return -1;
    }
    me.m_offset += read;
    *buffer = me.m_buffer.data();
    return read;
}

std::int64_t ArchiveReader::Skip(archive* /*reader*/, void* self, std::int64_t bytes) {
    auto& me = *static_cast<ArchiveReader*>(self);
    const std::int64_t skipped =
        std::clamp<std::int64_t>(me.m_file.Size() - me.m_offset, 0, std::max<std::int64_t>(bytes, 0));
    me.m_offset += skipped;
    return skipped;
}

std::int64_t ArchiveReader::Seek(archive* /*reader*/, void* self, std::int64_t offset, int whence) {
    auto& me = *static_cast<ArchiveReader*>(self);
    const std::int64_t size = me.m_file.Size();
    const std::int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? me.m_offset : size;
    std::int64_t target = 0;
    if (size < 0 || __builtin_add_overflow(base, offset, &target)) return ARCHIVE_FATAL;
    me.m_offset = std::clamp<std::int64_t>(target, 0, size);
    return me.m_offset;
}

ArchiveReader::Step ArchiveReader::ToStep(int failure) const {
    if (failure == ARCHIVE_EOF) return Step::kEnd;
    if (archive_read_has_encrypted_entries(m_reader) == 1) return Step::kEncrypted;
    return m_anyEntry ? Step::kDamaged : Step::kNoArchive;
}

ArchiveReader::Step ArchiveReader::TakeEntry() {
    // The library may be asked nothing about what it could not open.
    if (!m_anyEntry && archive_read_open1(m_reader) < ARCHIVE_WARN) return Step::kNoArchive;
    int result = ARCHIVE_RETRY;
    for (int i = 0; i < kMostRetries && result == ARCHIVE_RETRY; ++i)
        result = archive_read_next_header(m_reader, &m_entry);
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return ToStep(result);
    m_anyEntry = true;
    m_dataRead = 0;
    return Step::kEntry;
}

std::string ArchiveReader::EntryName() const {
    if (const char* const name = archive_entry_pathname(m_entry)) return name;
    if (const char* const name = archive_entry_pathname_utf8(m_entry)) return name;
    // Where the system's own encoding does not hold the name, it is there as wide characters only.
    const wchar_t* const name = archive_entry_pathname_w(m_entry);
    return name == nullptr ? std::string() : ToUtf8(name);
}

bool ArchiveReader::IsFile() const {
    return archive_entry_filetype(m_entry) == AE_IFREG && archive_entry_hardlink(m_entry) == nullptr;
}

bool ArchiveReader::IsFolder() const {
    return archive_entry_filetype(m_entry) == AE_IFDIR;
}

bool ArchiveReader::IsEncrypted() const {
    return archive_entry_is_encrypted(m_entry) != 0;
}

std::int64_t ArchiveReader::ReadData(void* buffer, std::size_t size) {
    const la_ssize_t read = archive_read_data(m_reader, buffer, size);
    if (read < 0) return -1;
    m_dataRead += read;
    return read;
}

bool ArchiveReader::IsWhole() const {
    return archive_entry_size_is_set(m_entry) == 0 || archive_entry_size(m_entry) == m_dataRead;
}

}  // namespace quirepress
