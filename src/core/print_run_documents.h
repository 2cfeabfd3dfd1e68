#pragma once

#include <memory>

#include "core/run_way.h"

namespace quirepress {

class DebugLog;
class Files;
class PdfPreparation;
struct GeneralOptions;

struct DocumentWayServices {
    PdfPreparation& preparation;
    Files& files;
    DebugLog& debugLog;
    const GeneralOptions& options;
};

// Documents of every kind: what a row asks of them is done before they are offered to `ways`, in their order.
// Forms data become the filled form, PDF files those pages that are wanted, without a password. What can't be
// done is refused, so that nothing else comes out than what was asked for.
std::unique_ptr<RunWay> MakeDocumentWay(const DocumentWayServices& services, RunWays ways);

}  // namespace quirepress
