#include <exception>
#include <functional>
#include <qpdf/QPDF.hh>

#include "page_workloads.h"
#include "runner.h"

namespace quirepress {
namespace {

// What the library's own users do for a count, from the file itself.
long long CountByQpdf(const std::string& path) {
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processFile(path.c_str());
        return pdf.getRoot().getKey("/Pages").getKey("/Count").getIntValue();
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace

double CountPdfFilesByQpdf(const std::vector<std::string>& paths, std::vector<long long>* pages) {
    return TimeCall([&] {
        for (const std::string& path : paths) {
            const long long count = CountByQpdf(path);
            if (pages) pages->push_back(count);
        }
    });
}

}  // namespace quirepress
