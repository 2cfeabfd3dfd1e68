#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

// What every user of Files needs. A failed call leaves its target as it was.

// The whole of `path`, which may have at most `limit` bytes (more: kFailed). False leaves `out` as it was.
bool ReadWholeFile(Files& files, std::string_view path, std::int64_t limit, std::string& out,
                   FileResult& result);

// `path` holds either what it held or `bytes`, whatever happens meanwhile; on success for good.
FileResult ReplaceFileDurably(Files& files, std::string_view path, std::string_view bytes,
                              FileAccess access = FileAccess::kShared);

// `path`, which must not exist (kExists, whoever made it meanwhile), becomes `bytes` or does not come to be.
FileResult WriteNewFileDurably(Files& files, std::string_view path, std::string_view bytes);

// A file that is written piece by piece: `path` keeps what it held until Finish, and for good
// when a call fails or Finish is never called. Once one call has failed, the later ones answer that failure.
class ReplacementFile {
public:
    ReplacementFile(Files& files, std::string_view path, FileAccess access = FileAccess::kShared);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    FileResult Result() const { return m_result; }  // at first, whether it can be written at all
    FileResult Write(const void* data, std::size_t size);
    // It gets the times and the permissions of the file `path`, where the volume can keep them.
    void TakeAttributesOf(std::string_view path);
    FileResult Finish(bool replace = true);  // kExists when `path` has come to be unless `replace`

private:
    void EraseLeftOvers(int count);

    Files& m_files;
    std::string m_target;
    std::string m_path;
    std::string m_model;  // whose attributes it gets; empty: its own
    FileResult m_result = FileResult::kFailed;
    std::unique_ptr<OutputFile> m_file;
};

// `to`, which must not exist, becomes a complete copy with the times of `from`, or does not come to be.
// `keepGoing` is asked between chunks and may pump; when it answers false the copy is given up with kFailed.
FileResult CopyFileDurably(Files& files, std::string_view from, std::string_view to,
                           const std::function<bool()>& keepGoing = {});

// A file, or a folder with all that is in it; links are erased, not followed. What could be erased is gone
// even when it fails. kDone when nothing is there.
// Whether the file is not there although its folder is: one whose folder is out of reach may come back.
bool IsGone(Files& files, std::string_view path);

// Whether both can be read and hold the same bytes.
bool HaveSameBytes(Files& files, std::string_view path, std::string_view other);

FileResult EraseTree(Files& files, std::string_view path);

}  // namespace quirepress
