#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quirepress {

struct PrintToFileOptions;

// The name that a print-to-file driver is given for a document.
struct OutputFileName {
    enum class Fate {
        kNew,
        kReplaces,  // the file exists and is to be overwritten
        kTaken      // the file exists and is to stay
    };
    std::string path;
    Fate fate = Fate::kNew;
};

// The document's title with the extension of the options, in their folder or beside the document. The
// document itself never is its own output: it is numbered like an existing file with VERSIONFILE.
OutputFileName MakeOutputFileName(const PrintToFileOptions& options, std::string_view document,
                                  const std::function<bool(const std::string&)>& exists);

}  // namespace quirepress
