#include <cstdlib>
#include <string>

#include "documents/pdf_quick_count.h"
#include "documents/pdf_recovery_count.h"
#include "documents/pdf_scan_count.h"
#include "documents/pdf_worker_messages.h"
#include "fakes/memory_file.h"

namespace quirepress {
namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

// Every way to a count ends, keeps to its bounds, and does not depend on the file before.
void CheckCounts(const std::string& bytes) {
    static PdfScratch used;
    PdfScratch fresh;
    MemoryFile file(bytes);
    const int quick = CountPdfPagesQuickly(file, used);
    Require(quick == -1 || (quick > 0 && quick <= file.Size()));
    Require(quick == CountPdfPagesQuickly(file, fresh));
    const PdfRecovery recovery = RecoverPdfPages(file, used);
    Require(recovery.pages == -1 || recovery.pages > 0);
    Require(recovery.pages == -1 || recovery.foundObjects);
    Require(recovery.pages == RecoverPdfPages(file, fresh).pages);
    Require(ScanPdfPages(file, {}) <= file.Size() / 11);
}

void CheckMessages(const std::string& bytes) {
    PdfWorkerRequest request;
    if (ParseRequest(bytes, request)) Require(FormatRequest(request) == bytes);
    Require(ParseRequest(FormatRequest({bytes, true, bytes}), request) && request.path == bytes);
    long long pages = 0;
    if (ParseAnswer(bytes, pages)) Require(pages >= -1);
}

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    quirepress::CheckCounts(bytes);
    constexpr std::size_t kMostMessage = 200;
    if (size <= kMostMessage) quirepress::CheckMessages(bytes);
    return 0;
}
