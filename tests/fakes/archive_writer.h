#pragma once

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

namespace quirepress {

struct ArchiveMember {
    std::string name;  // UTF-8, or bytes that go in as they are
    std::string bytes;
    int type = AE_IFREG;
    std::string linkTo = {};  // a hard link where `type` is AE_IFREG, else the symbolic link's target
};

// The bytes of an archive. `format` and `filter` are the writing library's names ("zip", "7zip", "ustar";
// "gzip", empty for none), `options` its option text, `password` empty for none.
inline std::string MakeArchive(const std::string& format, const std::vector<ArchiveMember>& members,
                               const std::string& filter = "", const std::string& options = "",
                               const std::string& password = "") {
    const std::string localeBefore = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    archive* const writer = archive_write_new();
    EXPECT_EQ(archive_write_set_format_by_name(writer, format.c_str()), ARCHIVE_OK);
    if (!filter.empty()) {
        EXPECT_EQ(archive_write_add_filter_by_name(writer, filter.c_str()), ARCHIVE_OK);
    }
    if (!options.empty()) {
        EXPECT_EQ(archive_write_set_options(writer, options.c_str()), ARCHIVE_OK);
    }
    if (!password.empty()) archive_write_set_passphrase(writer, password.c_str());
    std::size_t room = std::size_t{1} << 20;
    for (const ArchiveMember& member : members) room += member.bytes.size() + member.bytes.size() / 100;
    std::string bytes(room, '\0');
    std::size_t used = 0;
    archive_write_set_bytes_in_last_block(writer, 1);
    EXPECT_EQ(archive_write_open_memory(writer, bytes.data(), bytes.size(), &used), ARCHIVE_OK);
    for (const ArchiveMember& member : members) {
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, member.name.c_str());
        archive_entry_set_filetype(entry, static_cast<unsigned>(member.type));
        archive_entry_set_perm(entry, 0755);
        archive_entry_set_size(entry, static_cast<la_int64_t>(member.bytes.size()));
        if (!member.linkTo.empty() && member.type == AE_IFLNK)
            archive_entry_set_symlink(entry, member.linkTo.c_str());
        else if (!member.linkTo.empty())
            archive_entry_set_hardlink(entry, member.linkTo.c_str());
        EXPECT_GE(archive_write_header(writer, entry), ARCHIVE_WARN) << archive_error_string(writer);
        archive_write_data(writer, member.bytes.data(), member.bytes.size());
        archive_entry_free(entry);
    }
    EXPECT_EQ(archive_write_close(writer), ARCHIVE_OK);
    archive_write_free(writer);
    std::setlocale(LC_CTYPE, localeBefore.c_str());
    bytes.resize(used);
    return bytes;
}

}  // namespace quirepress
