#include "documents/qpdf_library.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <stdexcept>
#include <string>

#include "platform/files.h"

namespace quirepress {
namespace {

// An open file as libqpdf reads it. A failed read throws, as the library's own sources do.
class FileSource : public InputSource {
public:
    explicit FileSource(InputFile& file) : m_file(file) {}

    qpdf_offset_t findAndSkipNextEOL() override;
    const std::string& getName() const override { return m_name; }
    qpdf_offset_t tell() override { return m_position; }
    void seek(qpdf_offset_t offset, int whence) override;
    void rewind() override { m_position = 0; }
    size_t read(char* target, size_t length) override;
    void unreadCh(char) override { --m_position; }

private:
    InputFile& m_file;
    std::string m_name = "PDF file";
    qpdf_offset_t m_position = 0;
};

// Goes to the next line end and past all of its bytes; answers where it began.
qpdf_offset_t FileSource::findAndSkipNextEOL() {
    qpdf_offset_t lineEnd = -1;
    char block[1024];
    for (;;) {
        const qpdf_offset_t begin = m_position;
        const std::string_view bytes(block, read(block, sizeof block));
        std::size_t i = 0;
        if (lineEnd < 0) {
            i = std::min(bytes.find_first_of("\r\n"), bytes.size());
            if (i < bytes.size()) lineEnd = begin + static_cast<qpdf_offset_t>(i);
        }
        const std::size_t next = lineEnd < 0 ? bytes.size() : bytes.find_first_not_of("\r\n", i);
        if (next < bytes.size()) {
            m_position = begin + static_cast<qpdf_offset_t>(next);
            return lineEnd;
        }
        if (bytes.empty()) return lineEnd < 0 ? m_position : lineEnd;
    }
}

void FileSource::seek(qpdf_offset_t offset, int whence) {
    if (whence == SEEK_CUR) offset += m_position;
    if (whence == SEEK_END) offset += m_file.Size();
    if (offset < 0) throw std::runtime_error("a position before the file's begin");
    m_position = offset;
}

size_t FileSource::read(char* target, size_t length) {
    last_offset = m_position;
    const std::int64_t count = m_file.ReadAt(m_position, target, length);
    if (count < 0) throw std::runtime_error("the file cannot be read");
    m_position += count;
    return static_cast<size_t>(count);
}

// What the page tree says when that can be; else the pages themselves.
long long CountPages(QPDF& pdf, bool full, std::int64_t fileSize) {
    if (!full) {
        QPDFObjectHandle count = pdf.getRoot().getKey("/Pages").getKey("/Count");
        if (count.isInteger() && count.getIntValue() > 0 && count.getIntValue() <= fileSize)
            return count.getIntValue();
    }
    return static_cast<long long>(pdf.getAllPages().size());
}

}  // namespace

long long QpdfLibrary::CountPages(std::string_view path, bool full, std::string_view password) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
    return file ? CountPagesByQpdf(*file, full, password) : -1;
}

long long CountPagesByQpdf(InputFile& file, bool full, std::string_view password) {
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processInputSource(std::make_shared<FileSource>(file), std::string(password).c_str());
        return CountPages(pdf, full, file.Size());
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace quirepress
