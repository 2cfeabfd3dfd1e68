#pragma once

#include <string_view>

namespace quirepress {

class Files;

enum class PdfProtection {
    kNone,
    kEncrypted,  // with a password, or one that only its owner needs
    kUnknown     // the file is damaged, or no PDF
};

// By a few short reads at the file's end.
PdfProtection FindPdfProtection(Files& files, std::string_view path);

}  // namespace quirepress
