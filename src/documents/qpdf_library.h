#pragma once

#include <string_view>

#include "documents/pdf_counter.h"

namespace quirepress {

class InputFile;

// libqpdf in this process. A hostile file can make it take long and much memory: for files from anywhere,
// let it run in a worker.
class QpdfLibrary : public PdfLibrary {
public:
    explicit QpdfLibrary(Files& files) : m_files(files) {}
    long long CountPages(std::string_view path, bool full, std::string_view password) override;

private:
    Files& m_files;
};

// The same of an open file, whose life is the caller's.
long long CountPagesByQpdf(InputFile& file, bool full, std::string_view password);

}  // namespace quirepress
