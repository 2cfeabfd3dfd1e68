#include "documents/qpdf_file.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFWriter.hh>
#include <stdexcept>

#include "platform/files.h"

namespace quirepress {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

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

// Breaks off when there is more than it may take.
class StreamStart : public Pipeline {
public:
    StreamStart(std::string& bytes, std::size_t limit)
        : Pipeline("start", nullptr), m_bytes(bytes), m_limit(limit) {}

    void write(unsigned char const* data, size_t size) override {
        const size_t taken = std::min(size, m_limit - m_bytes.size());
        m_bytes.append(reinterpret_cast<const char*>(data), taken);
        if (taken < size) throw std::runtime_error("more than is wanted");
    }
    void finish() override {}

private:
    std::string& m_bytes;
    std::size_t m_limit;
};

// The library's destructors may write too, so that a failure is noted, not thrown.
class FileTarget : public Pipeline {
public:
    explicit FileTarget(OutputFile& file) : Pipeline("target", nullptr), m_file(file) {}

    void write(unsigned char const* data, size_t size) override {
        m_buffer.append(reinterpret_cast<const char*>(data), size);
        if (m_buffer.size() >= kBufferSize) Flush();
    }
    void finish() override { Flush(); }
    bool HasFailed() const { return m_hasFailed; }

private:
    void Flush() {
        m_hasFailed = m_hasFailed || m_file.Write(m_buffer.data(), m_buffer.size()) != FileResult::kDone;
        m_buffer.clear();
    }

    OutputFile& m_file;
    std::string m_buffer;
    bool m_hasFailed = false;
};

PdfResult WriteDraft(Files& files, QPDF& pdf, const std::string& draft) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<OutputFile> file =
        files.OpenForWriting(draft, OpenMode::kReplace, FileAccess::kOwnerOnly, result);
    if (!file) return PdfResult::kNotWritten;
    FileTarget target(*file);
    try {
        QPDFWriter writer(pdf);
        writer.setOutputPipeline(&target);
        writer.setPreserveEncryption(false);
        writer.setStreamDataMode(qpdf_s_preserve);
        writer.write();
    } catch (const std::exception& error) {
        return ResultOf(error);
    }
    const bool isWritten =
        !target.HasFailed() && file->FlushToDisk() == FileResult::kDone && file->Close() == FileResult::kDone;
    return isWritten ? PdfResult::kDone : PdfResult::kNotWritten;
}

std::unique_ptr<QPDF> OpenWith(InputFile& file, std::string_view password) {
    auto pdf = std::make_unique<QPDF>();
    pdf->setSuppressWarnings(true);
    pdf->processInputSource(std::make_shared<FileSource>(file), std::string(password).c_str());
    return pdf;
}

}  // namespace

std::unique_ptr<QPDF> OpenQpdf(InputFile& file, std::string_view password) {
    try {
        return OpenWith(file, password);
    } catch (const QPDFExc& error) {
        if (password.empty() || error.getErrorCode() != qpdf_e_password) throw;
        return OpenWith(file, "");
    }
}

PdfResult WriteQpdf(Files& files, QPDF& pdf, std::string_view target) {
    const std::string draft = DraftOfPdf(target);
    PdfResult result = WriteDraft(files, pdf, draft);
    if (result == PdfResult::kDone && files.Rename(draft, target, true) != FileResult::kDone)
        result = PdfResult::kNotWritten;
    if (result != PdfResult::kDone) files.Erase(draft);
    return result;
}

PdfResult ResultOf(const std::exception& error) {
    const auto* const known = dynamic_cast<const QPDFExc*>(&error);
    return known != nullptr && known->getErrorCode() == qpdf_e_password ? PdfResult::kWrongPassword
                                                                        : PdfResult::kUnreadable;
}

bool ReadStream(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit,
                std::string& bytes) {
    bytes.clear();
    StreamStart start(bytes, limit);
    bool isDecoded = false;
    return stream.pipeStreamData(&start, &isDecoded, 0, level, true) && (isDecoded || level == qpdf_dl_none);
}

std::string ReadStreamStart(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit) {
    std::string bytes;
    StreamStart start(bytes, limit);
    stream.pipeStreamData(&start, nullptr, 0, level, true);
    return bytes;
}

}  // namespace quirepress
