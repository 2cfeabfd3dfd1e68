#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "documents/pdf_scan_count.h"

namespace quirepress {

class Files;
struct PdfScratch;

// What the counter needs of the PDF library; implemented in this process (by the worker program and the
// tests) and by a worker process that a hostile file may take down.
class PdfLibrary {
public:
    virtual ~PdfLibrary() = default;
    // Pages of the file: the page tree's own count, or with `full` the pages that are really there. -1 when
    // it cannot be told. `password` opens a protected file. May pump.
    virtual long long CountPages(std::string_view path, bool full, std::string_view password) = 0;
};

// Page counts of PDF files: by the trailer where everything in it is plausible, by a scan of the objects
// where it is damaged, by the PDF library for the rest and for full counts.
class PdfCounter {
public:
    PdfCounter(Files& files, PdfLibrary& library);
    ~PdfCounter();

    // The count; -1 when the file cannot be read or its pages cannot be told (`status` is "No" then). May
    // pump where the library does.
    int CountPages(std::string_view path, bool full, std::string_view password, std::string& status);

    // The text scan for page objects: only what is written in one of a few fixed ways counts. 0 when
    // `progress` stops it.
    int ScanPages(std::string_view path, std::string& status, const PdfScanProgress& progress = {});

private:
    int CountOpenFile(std::string_view path, bool full, std::string_view password);
    int AskLibrary(std::string_view path, bool full, std::string_view password);

    Files& m_files;
    PdfLibrary& m_library;
    std::unique_ptr<PdfScratch> m_scratch;
};

}  // namespace quirepress
