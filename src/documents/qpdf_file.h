#pragma once

#include <cstddef>
#include <exception>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <string>
#include <string_view>

#include "documents/pdf_pages.h"

namespace quirepress {

class InputFile;

// Opens `pdf` on a file, which must outlive it. Throws what the library throws.
void OpenQpdf(QPDF& pdf, InputFile& file, std::string_view password);

// What an exception of the library means.
PdfResult ResultOf(const std::exception& error);

// The decoded bytes of a stream. False when they cannot be decoded, or are more than `limit`.
bool ReadStream(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit,
                std::string& bytes);

// At most the first `limit` of them.
std::string ReadStreamStart(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, std::size_t limit);

}  // namespace quirepress
