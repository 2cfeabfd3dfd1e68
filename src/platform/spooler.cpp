#include "platform/spooler.h"

#include <algorithm>
#include <array>

#include "base/path.h"
#include "base/text.h"

namespace quirepress {

bool Spooler::TakesDocument(std::string_view, std::string_view path) {
    constexpr std::array<std::string_view, 11> kExtensions = {
        ".pdf", ".txt", ".jpg", ".jpeg", ".jpe", ".png", ".gif", ".tiff", ".tif", ".bmp", ".text"};
    const std::string extension = ToLowerAscii(FileExtension(path));
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::string Spooler::ErrorText(int systemError) {
    return "error " + std::to_string(systemError);
}

}  // namespace quirepress
