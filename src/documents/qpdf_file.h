#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <string>
#include <string_view>

#include "documents/pdf_pages.h"

namespace quirepress {

class Files;
class InputFile;

// Opens a file, which must outlive what is answered. A file that needs no password is opened whatever
// `password` is, which may be meant for others. Throws what the library throws.
std::unique_ptr<QPDF> OpenQpdf(InputFile& file, std::string_view password);

// Writes the document without a password, its streams as they are. `target` is replaced by the complete file,
// or stays as it was.
PdfResult WriteQpdf(Files& files, QPDF& pdf, std::string_view target);

// What an exception of the library means.
PdfResult ResultOf(const std::exception& error);

// The decoded bytes of a stream. False when they cannot be decoded, or are more than `limit`.
bool ReadStream(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit,
                std::string& bytes);

// At most the first `limit` of them.
std::string ReadStreamStart(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit);

}  // namespace quirepress
